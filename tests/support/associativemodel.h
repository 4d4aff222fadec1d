// A random model check shared by the hash and map tests: operations on a container whose keys
// and values carry integers, against std::map. A copy taken along the way must stay as it was
// while the live container changes, so every mutator is also checked to detach; some calls are
// given keys and values that live in the container itself, and erase is handed iterators taken
// before a copy shared the block.
#ifndef VY_TESTS_ASSOCIATIVEMODEL_H
#define VY_TESTS_ASSOCIATIVEMODEL_H

#include "counted.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

typedef std::map<int, int> Model;

// What a container holds, read through its const iterators; each key once, as many as size().
template <class C> Model contentsOf(const C& c)
{
    Model result;
    int visited = 0;
    for (auto it = c.constBegin(); it != c.constEnd() && visited <= c.size(); ++it, ++visited)
        EXPECT_TRUE(result.emplace(valueOf(it.key()), valueOf(*it)).second) << "twice";
    EXPECT_EQ(visited, c.size());
    return result;
}

// Runs `steps` random operations on a C with keys K and values T from keys in
// [-keyRange / 2, keyRange / 2). `check(c)` tests the container's own structure now and then;
// `extra(c, model, key, value)` is one more operation of the container's own kind. Now and then
// an element copy throws (Counted only), early or near the end of copying every node (one or
// two per node): the operation must then leave the container as it was.
template <class K, class T, class C, class Check, class Extra>
void runAgainstModel(unsigned seed, int steps, int keyRange, Check check, Extra extra)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](int n) { return int(rng() % unsigned(n)); };
    C c, snapshot;
    const C& cc = c;
    Model model, snapshotModel;
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE(step);
        const int key = pick(keyRange) - keyRange / 2, value = pick(1 << 20);
        auto found = model.find(key);
        const bool present = found != model.end();
        const bool failing = pick(4) == 0;
        const Model before = failing ? model : Model();
        Counted::copiesUntilThrow = failing ? 1 + pick(3) + pick(3) * c.size() : 0;
        try {
            switch (pick(11)) {
            case 0:
            case 1: {
                auto it = c.insert(K(key), T(value));
                ASSERT_EQ(valueOf(it.key()), key);
                ASSERT_EQ(valueOf(*it), value);
                model[key] = value;
                break;
            }
            case 2:
                c[K(key)] = T(model[key] = value);
                break;
            case 3:
                ASSERT_EQ(c.remove(K(key)), int(model.erase(key)));
                break;
            case 4:
                // The value is returned by copy after its node is gone; that copy must not fail.
                Counted::copiesUntilThrow = 0;
                ASSERT_EQ(valueOf(c.take(K(key))), present ? found->second : 0);
                model.erase(key);
                break;
            case 5:
                ASSERT_EQ(cc.contains(K(key)), present);
                ASSERT_EQ(valueOf(cc.value(K(key), T(-1))), present ? found->second : -1);
                ASSERT_EQ(valueOf(cc.value(K(key))), present ? found->second : 0);
                break;
            case 6: {
                auto it = c.find(K(key));
                ASSERT_EQ(it == c.end(), !present);
                if (!present)
                    break;
                // Half the time the block is shared before the erase, which then carries the
                // iterator over to this container's own copy.
                C shared = c;
                if (pick(2))
                    shared.detach();
                auto next = c.erase(it);
                model.erase(found);
                auto successor = ++shared.constFind(K(key));
                ASSERT_EQ(next == c.end(), successor == shared.constEnd());
                if (next != c.end()) {
                    ASSERT_EQ(valueOf(next.key()), valueOf(successor.key()));
                }
                break;
            }
            case 7:
                if (model.empty())
                    break;
                if (pick(2)) {
                    model[key] = model[valueOf(cc.constBegin().key())];
                    c.insert(K(key), *cc.constBegin());
                } else if (pick(2)) {
                    model.erase(valueOf(cc.constBegin().key()));
                    ASSERT_EQ(c.remove(cc.constBegin().key()), 1);
                } else {
                    auto last = --c.end();
                    *last = T(model[valueOf(last.key())] = value);
                }
                break;
            case 8:
                snapshot = c;
                snapshotModel = model;
                break;
            case 9:
                if (pick(4) == 0) {
                    // Continue from the older copy: the live container and model jump back.
                    c = snapshot;
                    model = snapshotModel;
                } else if (pick(30) == 0) {
                    c.clear();
                    model.clear();
                }
                break;
            case 10:
                extra(c, model, key, value);
                break;
            }
        } catch (const std::bad_alloc&) {
            model = before;
            ASSERT_EQ(contentsOf(c), model);
        }
        Counted::copiesUntilThrow = 0;
        ASSERT_EQ(c.size(), int(model.size()));
        if (step % 97 == 0 || step == steps - 1) {
            ASSERT_EQ(contentsOf(c), model);
            ASSERT_EQ(contentsOf(snapshot), snapshotModel);
            ASSERT_EQ(snapshot == c, snapshotModel == model);
            check(c);
            // keys() and values() follow the iteration order.
            std::vector<int> keys;
            for (auto it = cc.constBegin(); it != cc.constEnd(); ++it)
                keys.push_back(valueOf(it.key()));
            ASSERT_EQ(valuesOf(cc.keys()), keys);
            ASSERT_EQ(valuesOf(cc.values()), valuesOf(cc));
        }
    }
}

#endif
