#include "vybytearray.h"

#include <gtest/gtest.h>

#include <random>
#include <stdlib.h>
#include <string.h>
#include <string>

namespace
{

std::string bytes(const VyByteArray& a)
{
    return a.size() ? std::string(a.constData(), size_t(a.size())) : std::string();
}

} // namespace

TEST(VyByteArrayStorageTest, AllocMemoryGrowsByDoublingAndNeverShrinks)
{
    VyByteArray a(0);
    VyByteArray::Data* d = a.d;
    VyByteArray::Data::allocMemory(d, 10, true);
    EXPECT_EQ(d->alloc, 20);
    char* buffer = d->data;
    ASSERT_NE(buffer, nullptr);
    VyByteArray::Data::allocMemory(d, 20, false); // fits: untouched
    VyByteArray::Data::allocMemory(d, 2, false);  // ten times too large: still untouched
    EXPECT_EQ(d->alloc, 20);
    EXPECT_EQ(d->data, buffer);
    VyByteArray::Data::allocMemory(d, 21, false);
    EXPECT_EQ(d->alloc, 21);
    // A recorded capacity without a buffer still allocates.
    VyByteArray b(0);
    b.d->alloc = 50;
    VyByteArray::Data::allocMemory(b.d, 8, false);
    EXPECT_EQ(b.d->alloc, 8);
    EXPECT_NE(b.d->data, nullptr);
}

TEST(VyByteArrayStorageTest, ConstructorsReserveCountPlusTerminator)
{
    VyByteArray sized(5);
    EXPECT_EQ(sized.size(), 5);
    EXPECT_EQ(sized.d->alloc, 6);
    EXPECT_EQ(sized.constData()[5], 0);
    VyByteArray filled(3, 'x');
    EXPECT_EQ(bytes(filled), "xxx");
    EXPECT_EQ(filled.constData()[3], 0);
    for (int n : {0, -4}) {
        VyByteArray empty(n, 'y');
        EXPECT_NE(empty.d, &VyByteArray::Data::shared_null);
        EXPECT_EQ(empty.d->ref, 1);
        EXPECT_EQ(empty.constData(), nullptr);
        EXPECT_TRUE(empty.isEmpty());
    }
    VyByteArray text("");
    EXPECT_EQ(text.d->alloc, 1);
    EXPECT_EQ(text.constData()[0], 0);
}

TEST(VyByteArrayStorageTest, FromCStringTakesSizeOnlyBelowTheLength)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 300; ++round) {
        std::string s(rng() % 12, 'a');
        for (char& c : s)
            c = char('a' + rng() % 26);
        const int size = int(rng() % (s.size() + 6)) - 3;
        const VyByteArray a(s.c_str(), size);
        const size_t count = (size >= 0 && size_t(size) < s.size()) ? size_t(size) : s.size();
        ASSERT_EQ(bytes(a), s.substr(0, count)) << size;
        ASSERT_EQ(a.d->alloc, int(count) + 1);
        ASSERT_EQ(a.constData()[count], 0);
    }
}

TEST(VyByteArraySharingTest, CopiesAndAssignmentShareOneCount)
{
    const int nullRef = VyByteArray::Data::shared_null.ref;
    {
        VyByteArray e;
        EXPECT_EQ(e.d, &VyByteArray::Data::shared_null);
        EXPECT_EQ(VyByteArray::Data::shared_null.ref, nullRef + 1);
        VyByteArray a("abc");
        VyByteArray b(a);
        EXPECT_EQ(b.d, a.d);
        EXPECT_EQ(a.d->ref, 2);
        e = a;
        EXPECT_EQ(VyByteArray::Data::shared_null.ref, nullRef);
        EXPECT_EQ(a.d->ref, 3);
        e = e;
        b = a;
        EXPECT_EQ(a.d->ref, 3);
        VyByteArray c("x");
        c.releaseData();
        EXPECT_EQ(c.d, nullptr);
        c.d = &VyByteArray::Data::shared_null; // balanced again for the destructor
        ++c.d->ref;
    }
    EXPECT_EQ(VyByteArray::Data::shared_null.ref, nullRef);
}

TEST(VyByteArraySharingTest, DataDetachesAndLeavesTheOriginal)
{
    VyByteArray a("hello");
    VyByteArray b(a);
    b.data()[0] = 'j';
    EXPECT_EQ(bytes(a), "hello");
    EXPECT_EQ(bytes(b), "jello");
    EXPECT_EQ(b.d->alloc, 6);
    EXPECT_EQ(b.constData()[5], 0);
    EXPECT_EQ(a.d->ref, 1);
    char* own = b.data();
    EXPECT_EQ(b.data(), own); // owned: no further copy

    VyByteArray e;
    EXPECT_EQ(e.data(), nullptr); // a detached empty array has no buffer
    EXPECT_NE(e.d, &VyByteArray::Data::shared_null);
}

TEST(VyByteArraySharingTest, FromRawBytesCopiesOrAdopts)
{
    VyByteArray a("keep");
    VyByteArray::Data* before = a.d;
    a.fromRawBytes(nullptr, 5, true);
    EXPECT_EQ(a.d, before);
    EXPECT_EQ(bytes(a), "keep");

    VyByteArray copy(a);
    char text[] = "raw bytes";
    copy.fromRawBytes(text, -1, true);
    EXPECT_EQ(bytes(copy), "raw bytes");
    EXPECT_EQ(copy.d->alloc, 10);
    EXPECT_NE(copy.constData(), text);
    EXPECT_EQ(bytes(a), "keep");
    EXPECT_EQ(a.d->ref, 1);

    char* owned = static_cast<char*>(malloc(8));
    memcpy(owned, "adopted", 8);
    copy.fromRawBytes(owned, 4, false);
    EXPECT_EQ(copy.constData(), owned);
    EXPECT_EQ(copy.d->alloc, 4);
    EXPECT_EQ(bytes(copy), "adop");
}

TEST(VyByteArraySharingTest, FromRawBytesWithItsOwnBuffer)
{
    VyByteArray a("abcdef");
    a.fromRawBytes(a.data() + 2, 3, true);
    EXPECT_EQ(bytes(a), "cde");
    char* own = a.data();
    a.fromRawBytes(own, 2, false);
    EXPECT_EQ(a.constData(), own);
    EXPECT_EQ(bytes(a), "cd");

    VyByteArray shared("xyz");
    VyByteArray other(shared);
    other.fromRawBytes(other.d->data, -1, true); // reads the shared buffer, keeps it alive
    EXPECT_EQ(bytes(other), "xyz");
    EXPECT_NE(other.d, shared.d);
    EXPECT_EQ(shared.d->ref, 1);
}
