#include "vybytearray.h"

#include <gtest/gtest.h>

#include <random>
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
    char* buffer = a.d->data;
    VyByteArray::Data::allocMemory(a.d, 2, false); // ten times too large: kept
    EXPECT_EQ(a.d->alloc, 20);
    EXPECT_EQ(a.d->data, buffer);
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
    const VyByteArray empty(-4, 'y'); // a block of its own without a buffer
    EXPECT_NE(empty.d, &VyByteArray::Data::shared_null);
    EXPECT_EQ(empty.constData(), nullptr);
    std::mt19937 rng(7);
    for (int round = 0; round < 200; ++round) {
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

TEST(VyByteArraySharingTest, CopiesShareAndDataDetaches)
{
    const int nullRef = VyByteArray::Data::shared_null.ref;
    {
        VyByteArray e;
        EXPECT_EQ(VyByteArray::Data::shared_null.ref, nullRef + 1);
        VyByteArray a("hello");
        VyByteArray b(a);
        e = a;
        VyByteArray solo("x");
        const VyByteArray& alias = solo;
        solo = alias; // an unshared block survives assignment to itself
        EXPECT_STREQ(solo.constData(), "x");
        EXPECT_EQ(VyByteArray::Data::shared_null.ref, nullRef);
        EXPECT_EQ(a.d->ref, 3);
        b.data()[0] = 'j';
        EXPECT_EQ(bytes(a), "hello");
        EXPECT_STREQ(b.constData(), "jello");
        EXPECT_EQ(a.d->ref, 2);
        EXPECT_EQ(VyByteArray().data(), nullptr); // a detached empty array has no buffer
    }
    EXPECT_EQ(VyByteArray::Data::shared_null.ref, nullRef);
}

TEST(VyByteArraySharingTest, FromRawBytesCopiesOrAdopts)
{
    VyByteArray a("abcdef");
    VyByteArray::Data* before = a.d;
    a.fromRawBytes(nullptr, 5, true);
    EXPECT_EQ(a.d, before);

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
