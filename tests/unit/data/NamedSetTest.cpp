#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "data/NamedSet.h"

namespace vireo {
namespace {

struct Named {
    const std::string& getName() const { return name; }
    std::string name;
    int content = 0;
};

using Set = NamedSet<Named>;

Set::Pointer named(int number, int content = 0) {
    return std::make_shared<const Named>(Named{"name-" + std::to_string(number), content});
}

/// Whether the set holds what the map says, and nothing else.
void expectHolds(const Set& set, const std::map<std::string, int>& expected) {
    ASSERT_EQ(set.values().size(), expected.size());
    for (const auto& [name, content] : expected) {
        const Set::Pointer found = set.find(name);
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found->name, name);
        EXPECT_EQ(found->content, content) << name;
    }
}

TEST(NamedSet, HoldsTheLastOfEachNameHoweverManyThereAre) {
    std::mt19937 random(7);
    for (const int names : {3, 8, 9, 40}) {  // few are kept in another way than many
        Set set;
        std::map<std::string, int> expected;
        for (int step = 0; step < 400; ++step) {
            const int number = static_cast<int>(random() % static_cast<unsigned>(names));
            const std::string name = "name-" + std::to_string(number);
            switch (random() % 3) {
                case 0:
                    set.put(named(number, step));
                    expected.insert_or_assign(name, step);
                    break;
                case 1:
                    EXPECT_EQ(set.insert(named(number, step)),
                              expected.try_emplace(name, step).second);
                    break;
                default:
                    EXPECT_EQ(set.erase(name), expected.erase(name) == 1);
            }
            expectHolds(set, expected);
        }
        const Set copy = set;
        set.clear();
        expectHolds(set, {});
        expectHolds(copy, expected);
    }
}

}  // namespace
}  // namespace vireo
