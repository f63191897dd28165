#pragma once

#include <functional>
#include <string>
#include <vector>

#include "MgmtAgentIfc.h"
#include "support/Records.h"

namespace vireo::test {

/// An agent or observer of the test's.
struct TestAgent : MgmtAgentIfc {
    bool setData(ManageableData& record) override { return !onSet || onSet(record); }
    bool getData(ManageableData& record) override { return onGet && onGet(record); }
    bool manageableDataChanged(ManageableData& record) override {
        std::string text;
        for (const std::string& item : itemsOf(record)) {
            text += (text.empty() ? "" : " ") + item;
        }
        told.push_back(text);
        return onChange && onChange(record);
    }
    bool resetUserData() override { return true; }

    std::vector<std::string> told;
    std::function<bool(ManageableData&)> onSet;
    std::function<bool(ManageableData&)> onGet;
    std::function<bool(ManageableData&)> onChange;
};

}  // namespace vireo::test
