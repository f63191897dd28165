#include <thread>

#include "files/PhoneBusyState.h"
#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class PhoneBusyStateTest : public ItemHouse {
protected:
    PhoneBusyStateTest() { load(); }

    void watch() { registry.addObserver("phone-busy-status", {&observer, false}); }

    std::string told() const { return observer.told.empty() ? "" : observer.told.back(); }

    TestAgent observer;
    PhoneBusyState state{face};
};

TEST_F(PhoneBusyStateTest, ObserversAreToldOfTheMask) {
    watch();
    state.set(1);
    state.set(512);
    state.clear(1);
    state.clear(4);
    EXPECT_EQ(observer.told, (Texts{"phone-busy-status=1", "phone-busy-status=513",
                                    "phone-busy-status=512", "phone-busy-status=512"}));
}

TEST_F(PhoneBusyStateTest, AClientsWriteIsToldAndLeavesTheMaskAlone) {
    watch();
    state.set(512);
    EXPECT_EQ(set({{"phone-busy-status", "0"}}, true), Texts{});
    EXPECT_EQ(told(), "phone-busy-status=0");
    EXPECT_EQ(state.mask(), 512U);
}

TEST_F(PhoneBusyStateTest, AnObserverMayMoveTheMaskWhileItIsTold) {
    watch();
    observer.onChange = [this](ManageableData&) {
        if (state.mask() == 1) {
            state.set(512);
        }
        return true;
    };
    state.set(1);
    EXPECT_EQ(state.mask(), 513U);
    EXPECT_EQ(told(), "phone-busy-status=513");
}

TEST_F(PhoneBusyStateTest, TheItemEndsUpWithTheMaskWhoeverMovesIt) {
    std::vector<std::thread> threads;
    for (unsigned bit = 0; bit < 8; ++bit) {
        threads.emplace_back([this, bit] {
            for (int i = 0; i < 50; ++i) {
                state.set(1U << bit);
                state.clear(1U << bit);
            }
            state.set(bit % 2 << bit);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(state.mask(), 0xAAU);
    EXPECT_EQ(catalogue.master().getDocument("phone-busy-status")->root()->text(),
              std::to_string(0xAA));
}

}  // namespace
}  // namespace vireo::test
