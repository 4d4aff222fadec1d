// VyStringList: a list of strings, the result of VyString::split.
//
// A VyList<VyString> (implicitly shared, copy on write, each string held as a heap copy that
// shares its block with the original); it adds constructors only. Like every VyList it is
// polymorphic through its destructor alone. A given list object belongs to one thread at a
// time.
#ifndef VYSTRINGLIST_H
#define VYSTRINGLIST_H

#include "vylist.h"
#include "vystring.h"

class VyStringList : public VyList<VyString>
{
public:
    VyStringList() {}
    // A list of one string.
    explicit VyStringList(const VyString& s) { append(s); }
    // Shares the other list's block.
    VyStringList(const VyList<VyString>& other) : VyList<VyString>(other) {}
};

#endif
