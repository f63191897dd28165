#include <gtest/gtest.h>

#include <future>

#include "files/CurrentDownload.h"

namespace vireo::test {
namespace {

// Whoever waited for an earlier download has not come for its outcome.
TEST(CurrentDownload, AnOutcomeThatWasLeftLyingIsNotThatOfTheNextDownload) {
    CurrentDownload current;
    const CurrentDownload::Facts awaited{.type = LocalMgmtIfc::FILETYPE_PICTURE,
                                         .path = "/f",
                                         .callback = nullptr,
                                         .isAwaited = true};
    current.begin(awaited);
    current.deliver(false);
    current.begin(awaited);
    std::future<bool> outcome =
        std::async(std::launch::async, [&current] { return current.await(); });
    // Time for a mistake to show; a service without it passes whatever the time is.
    EXPECT_EQ(outcome.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    current.deliver(true);
    EXPECT_TRUE(outcome.get());
}

}  // namespace
}  // namespace vireo::test
