#include "messages/TaskQueue.h"

#include <exception>
#include <utility>

#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "TaskQueue";
constexpr const char* kFile = "./host/messages/TaskQueue";

void runOne(const std::function<void()>& task) {
    try {
        task();
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "a task let an exception out", exception);
    } catch (...) {
        if (loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__,
                      "a task let something out that is no standard exception");
        }
    }
}

}  // namespace

bool TaskQueue::post(std::function<void()> task) {
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(task));
    m_waiting.store(true, std::memory_order_relaxed);
    return m_tasks.size() == 1;
}

void TaskQueue::runPosted() {
    if (!m_waiting.load(std::memory_order_relaxed)) {
        return;
    }
    std::vector<std::function<void()>> tasks;
    {
        const std::lock_guard lock(m_mutex);
        tasks.swap(m_tasks);
        m_waiting.store(false, std::memory_order_relaxed);
    }
    for (const std::function<void()>& task : tasks) {
        runOne(task);
    }
}

}  // namespace vireo
