#include "vybytearray.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string>

static std::string bytes(const VyByteArray& a)
{
    return std::string(a.constData(), a.size());
}

TEST(VyByteArrayStorageTest, AllocMemoryGrowsByDoublingAndNeverShrinks)
{
    VyByteArray a(0);
    VyByteArray::Data::allocMemory(a.d, 10, true);
    VyByteArray::Data::allocMemory(a.d, 2, false); // ten times too large: kept
    EXPECT_EQ(a.d->alloc, 20);
    VyByteArray::Data::allocMemory(a.d, 21, false);
    EXPECT_EQ(a.d->alloc, 21);
    VyByteArray b(0); // a capacity recorded without a buffer still allocates
    b.d->alloc = 50;
    VyByteArray::Data::allocMemory(b.d, 8, false);
    EXPECT_EQ(b.d->alloc, 8);
}

TEST(VyByteArrayStorageTest, ConstructorsReserveCountPlusTerminator)
{
    EXPECT_EQ(VyByteArray(5).d->alloc, 6);
    EXPECT_STREQ(VyByteArray(3, 'x').constData(), "xxx");
    EXPECT_EQ(VyByteArray(-4, 'y').constData(), nullptr);
    // {size, count}: a size below 0 or beyond the text takes all of it.
    const int sizes[][2] = {{-1, 5}, {2, 2}, {9, 5}};
    for (const auto& s : sizes) {
        const VyByteArray a("hello", s[0]);
        EXPECT_EQ(bytes(a), std::string("hello", size_t(s[1]))) << s[0];
        EXPECT_EQ(a.d->alloc, s[1] + 1);
    }
}

TEST(VyByteArraySharingTest, CopiesShareAndDataDetaches)
{
    {
        VyByteArray a("hello");
        VyByteArray b(a);
        EXPECT_EQ(a.d->ref, 2);
        b.data()[0] = 'j';
        EXPECT_EQ(bytes(a), "hello");
        EXPECT_EQ(bytes(b), "jello");
        const VyByteArray& alias = b;
        b = alias; // an unshared block survives assignment to itself
        EXPECT_EQ(bytes(b), "jello");
        EXPECT_EQ(VyByteArray().data(), nullptr); // a detached empty array has no buffer
    }
}

TEST(VyByteArraySharingTest, FromRawBytesCopiesOrAdopts)
{
    const VyByteArray a("abcdef");
    VyByteArray copy(a);
    copy.fromRawBytes(copy.d->data + 2, -1, true); // reads the shared buffer
    EXPECT_STREQ(copy.constData(), "cdef");
    EXPECT_EQ(copy.d->alloc, 5);
    EXPECT_EQ(bytes(a), "abcdef");
    copy.fromRawBytes(copy.data() + 1, 2, true); // reads its own, unshared buffer
    EXPECT_STREQ(copy.constData(), "de");
    char* own = copy.data();
    copy.fromRawBytes(own, 1, false); // adopts its own buffer back
    EXPECT_EQ(copy.constData(), own);
    EXPECT_EQ(bytes(copy), "d");

    char* raw = static_cast<char*>(malloc(8));
    copy.fromRawBytes(raw, 4, false);
    EXPECT_EQ(copy.constData(), raw);
    EXPECT_EQ(copy.d->alloc, 4);
}

// The strings test program is linked with --wrap=realloc, so every realloc of the library goes
// through here and a test can make the next one fail.
namespace
{
bool failNextRealloc = false;
}
extern "C" void* __real_realloc(void* p, size_t n);
extern "C" void* __wrap_realloc(void* p, size_t n)
{
    if (failNextRealloc) {
        failNextRealloc = false;
        return nullptr;
    }
    return __real_realloc(p, n);
}

TEST(VyByteArrayStorageTest, FailedReallocationThrowsAndKeepsTheBuffer)
{
    VyByteArray a("hello");
    const char* buffer = a.d->data;
    const int alloc = a.d->alloc;
    failNextRealloc = true;
    EXPECT_THROW(VyByteArray::Data::allocMemory(a.d, 100, true), std::bad_alloc);
    EXPECT_EQ(a.d->data, buffer);
    EXPECT_EQ(a.d->alloc, alloc);
    EXPECT_STREQ(a.constData(), "hello");
    // A constructor whose buffer cannot be had throws and leaks nothing (LeakSanitizer).
    failNextRealloc = true;
    EXPECT_THROW(VyByteArray("abc", 3), std::bad_alloc);
}
