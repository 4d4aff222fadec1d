// A random model check shared by the hash and map tests: operations on a container whose keys
// and values carry integers, against std::map. Copies taken along the way must stay as they
// were while the live container changes, so every mutator is also checked to detach; some calls
// are given keys and values that live in the container itself, and erase is handed iterators
// taken before a copy shared the block.
#ifndef VY_TESTS_ASSOCIATIVEMODEL_H
#define VY_TESTS_ASSOCIATIVEMODEL_H

#include "counted.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
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
// `extra(c, model, key, value)` is one more operation of the container's own kind.
template <class K, class T, class C, class Check, class Extra>
void runAgainstModel(unsigned seed, int steps, int keyRange, Check check, Extra extra)
{
    std::mt19937 rng(seed);
    auto pick = [&rng](int n) { return int(rng() % unsigned(n)); };
    C c;
    const C& cc = c;
    Model model;
    std::vector<std::pair<C, Model>> snapshots;
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE(step);
        const int key = pick(keyRange) - keyRange / 2, value = pick(1 << 20);
        auto found = model.find(key);
        const bool present = found != model.end();
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
            C before = c;
            if (pick(2))
                before.detach();
            auto next = c.erase(it);
            model.erase(found);
            auto successor = ++before.constFind(K(key));
            ASSERT_EQ(next == c.end(), successor == before.constEnd());
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
            if (snapshots.size() < 4)
                snapshots.emplace_back(c, model);
            else
                snapshots[size_t(pick(4))] = {c, model};
            break;
        case 9:
            if (!snapshots.empty() && pick(4) == 0) {
                // Continue from an older copy: the live container and model jump back.
                const auto& s = snapshots[size_t(pick(int(snapshots.size())))];
                c = s.first;
                model = s.second;
            } else if (pick(30) == 0) {
                c.clear();
                model.clear();
            }
            break;
        case 10:
            extra(c, model, key, value);
            break;
        }
        ASSERT_EQ(c.size(), int(model.size()));
        if (step % 97 == 0 || step == steps - 1) {
            ASSERT_EQ(contentsOf(c), model);
            check(c);
            for (const auto& s : snapshots) {
                ASSERT_EQ(contentsOf(s.first), s.second);
                ASSERT_EQ(s.first == c, s.second == model);
            }
            // keys() and values() follow the iteration order.
            std::vector<int> keys, values;
            for (auto it = cc.constBegin(); it != cc.constEnd(); ++it) {
                keys.push_back(valueOf(it.key()));
                values.push_back(valueOf(*it));
            }
            ASSERT_EQ(valuesOf(cc.keys()), keys);
            ASSERT_EQ(valuesOf(cc.values()), values);
        }
    }
}

#endif
