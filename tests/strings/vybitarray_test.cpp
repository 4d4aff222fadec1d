// Bit arrays against a std::vector<bool> model: every operation on random arrays whose bits
// beyond the count hold anything, each mutator on a copy that shares its block with an array
// that must not change, and mutators fed their own contents.
#include "vybitarray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

namespace
{

typedef std::vector<bool> Model;

// An array holding the model's bits whose bits beyond the count are all `padding`.
VyBitArray build(const Model& m, bool padding)
{
    VyBitArray a(int(m.size()), padding);
    for (size_t i = 0; i < m.size(); ++i)
        m[i] ? a.setBit(int(i)) : a.clearBit(int(i));
    return a;
}

// Uniform bits (so allSet and allCleared see both answers), one bit off, or random bits.
Model randomModel(std::mt19937& rng, int n)
{
    const unsigned kind = rng() % 3;
    Model m(static_cast<size_t>(n), (rng() & 1) != 0);
    for (size_t i = 0; kind == 2 && i < m.size(); ++i)
        m[i] = (rng() & 1) != 0;
    if (kind == 1 && n > 0)
        m[rng() % m.size()].flip();
    return m;
}

void expectMatches(const VyBitArray& a, const Model& m)
{
    ASSERT_EQ(a.size, int(m.size()));
    ASSERT_EQ(a.d.size(), (a.size + 7) / 8);
    for (int i = -2; i < a.size + 9; ++i)
        ASSERT_EQ(a.isSet(i), i >= 0 && i < a.size && m[size_t(i)]) << i;
    EXPECT_EQ(a.allSet(), std::count(m.begin(), m.end(), false) == 0);
    EXPECT_EQ(a.allCleared(), std::count(m.begin(), m.end(), true) == 0);
    EXPECT_TRUE(a == build(m, !a.isSet(0))); // whatever the bits beyond the count hold
    if (!m.empty()) {
        Model other = m;
        other.back().flip();
        EXPECT_TRUE(a != build(other, false));
    }
}

} // namespace

TEST(VyBitArrayTest, EveryOperationAgainstModel)
{
    std::mt19937 rng(1);
    const std::function<bool(bool, bool)> ops[] = {
        std::logical_and<bool>(), std::logical_or<bool>(), std::not_equal_to<bool>()};
    for (int round = 0; round < 900; ++round) {
        const int op = round % 3;
        const int na = int(rng() % 70);
        const int nb = int(rng() % 70);
        const Model ma = randomModel(rng, na);
        const Model mb = randomModel(rng, nb);
        const bool pa = rng() & 1;
        const bool pb = rng() & 1;
        const VyBitArray a = build(ma, pa);
        const VyBitArray b = build(mb, pb);

        VyBitArray c = a;
        const int i = int(rng() % (na + 6)) - 3; // out of range is ignored
        const bool set = rng() & 1;
        set ? c.setBit(i) : c.clearBit(i);
        Model mc = ma;
        if (i >= 0 && i < na)
            mc[size_t(i)] = set;
        expectMatches(c, mc);

        // toRawBytes replaces the first k bits of `out` and keeps every other bit.
        const int bits = int(rng() % (na + 10)) - 1;
        const int k = (bits < 0 || bits > na) ? na : bits;
        std::vector<unsigned char> out(12), before(12);
        std::generate(before.begin(), before.end(), std::ref(rng));
        out = before;
        c.toRawBytes(out.data(), bits);
        Model raw(96);
        for (int j = 0; j < 96; ++j) {
            raw[size_t(j)] = (before[size_t(j >> 3)] >> (j & 7)) & 1;
            ASSERT_EQ((out[size_t(j >> 3)] >> (j & 7)) & 1, j < k ? mc[size_t(j)] : raw[size_t(j)]);
        }
        c = a;
        c.fromRawBytes(before.data(), na);
        raw.resize(size_t(na));
        expectMatches(c, raw);
        ASSERT_TRUE(!(na & 7) || (c.d.at(na >> 3) >> (na & 7)) == 0); // stored tail cleared
        c = a;
        c.fromRawBytes(c.d.constData(), na); // its own bytes, in the block it shares with `a`
        expectMatches(c, ma);
        c = a;
        c.fill(k, set);
        expectMatches(c, Model(size_t(k), set));

        // Compound: the first min(na, nb) bits combine; the rest of `a` and its size stay.
        c = a;
        op == 0 ? c &= b : op == 1 ? c |= b : c ^= b;
        mc = ma;
        for (int j = 0; j < std::min(na, nb); ++j)
            mc[size_t(j)] = ops[op](ma[size_t(j)], mb[size_t(j)]);
        expectMatches(c, mc);
        // With its own contents, once detached from `a`.
        op == 0 ? c &= c : op == 1 ? c |= c : c ^= c;
        expectMatches(c, op == 2 ? Model(size_t(na), false) : mc);
        expectMatches(a, ma); // every mutator above worked on a copy of `a`

        // Binary: the common bytes combine whole, padding included; later bytes are 0.
        const VyBitArray r = op == 0 ? a & b : op == 1 ? a | b : a ^ b;
        const int common = 8 * std::min((na + 7) / 8, (nb + 7) / 8);
        Model mr(static_cast<size_t>(std::max(na, nb)));
        for (int j = 0; j < std::min(common, int(mr.size())); ++j)
            mr[size_t(j)] = ops[op](j < na ? ma[size_t(j)] : pa, j < nb ? mb[size_t(j)] : pb);
        expectMatches(r, mr);
    }
}

// The model test above follows these rules on random sizes; here they are pinned on their own.
TEST(VyBitArrayTest, OperatorsWithAShorterOperand_Kept)
{
    // A compound `&=` keeps the bits beyond the shorter operand, and the size stays.
    VyBitArray a(16, true);
    a &= VyBitArray(8, false);
    Model kept(16, true);
    std::fill_n(kept.begin(), 8, false);
    expectMatches(a, kept);
    // Binary `|` drops the longer operand's extra bytes, as `&` does, but combines the shorter
    // operand's last byte whole, bits beyond its count included.
    kept.flip();
    expectMatches(VyBitArray(16, true) | VyBitArray(8, false), kept);
    expectMatches(VyBitArray(10, true) | VyBitArray(16, false), Model(16, true));
}
