// An element type for container tests: it counts constructions and destructions so a test can
// prove that nothing leaks and nothing is destroyed twice, and it can be told to throw on a
// chosen copy to exercise the containers' exception paths.
#ifndef VY_TESTS_COUNTED_H
#define VY_TESTS_COUNTED_H

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

struct Counted {
    static inline int constructed = 0;
    static inline int destroyed = 0;
    // When positive, the copy that brings it to zero throws.
    static inline int copiesUntilThrow = 0;

    int value;
    // Set while the object is alive; a destroyed object has it cleared, so a second
    // destruction or a read after destruction is caught.
    int alive;

    Counted(int v = 0) : value(v), alive(0x600D) { ++constructed; }
    Counted(const Counted& o) : value(o.value), alive(0x600D)
    {
        if (o.alive != 0x600D)
            throw std::logic_error("copy from a dead Counted");
        if (copiesUntilThrow > 0 && --copiesUntilThrow == 0)
            throw std::bad_alloc();
        ++constructed;
    }
    Counted& operator=(const Counted& o)
    {
        value = o.value;
        return *this;
    }
    ~Counted()
    {
        if (alive != 0x600D)
            std::terminate();
        alive = 0;
        ++destroyed;
    }
    bool operator==(const Counted& o) const { return value == o.value; }
    bool operator<(const Counted& o) const { return value < o.value; }

    static int living() { return constructed - destroyed; }
    static void reset()
    {
        constructed = destroyed = 0;
        copiesUntilThrow = 0;
    }
};

// The integer a plain element or a Counted carries, for comparing containers with models.
inline int valueOf(int v)
{
    return v;
}
inline int valueOf(const Counted& c)
{
    return c.value;
}

// The integers a container's elements carry, in iteration order.
template <class Container> std::vector<int> valuesOf(const Container& c)
{
    std::vector<int> values;
    for (const auto& element : c)
        values.push_back(valueOf(element));
    return values;
}

// Base of typed container tests: every test starts from zero counts and must end with every
// Counted it made destroyed exactly once.
class CountedTest : public ::testing::Test
{
protected:
    void SetUp() override { Counted::reset(); }
    void TearDown() override { EXPECT_EQ(Counted::living(), 0); }
};

#endif
