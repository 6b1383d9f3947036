#include "base/threads/nxStackThread.h"

#include <pthread.h>

#include <exception>
#include <system_error>

namespace {

struct Task
{
    const std::function<void()>& body;
    std::exception_ptr thrown;
};

void* RunTask(void* given)
{
    Task& task = *static_cast<Task*>(given);
    try {
        task.body();
    } catch (...) {
        task.thrown = std::current_exception();
    }
    return nullptr;
}

}  // namespace

void nxStackThread::Run(std::size_t stackBytes, const std::function<void()>& body)
{
    Task task{body, nullptr};
    pthread_attr_t attributes;
    pthread_t thread;
    int error = pthread_attr_init(&attributes);
    if (error == 0) {
        error = pthread_attr_setstacksize(&attributes, stackBytes);
        if (error == 0) error = pthread_create(&thread, &attributes, RunTask, &task);
        pthread_attr_destroy(&attributes);
    }
    if (error != 0) throw std::system_error(error, std::generic_category(), "no thread");
    pthread_join(thread, nullptr);
    if (task.thrown != nullptr) std::rethrow_exception(task.thrown);
}
