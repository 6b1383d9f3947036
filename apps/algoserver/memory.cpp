#include "apps/algoserver/memory.h"

#include <new>

namespace {

std::atomic<bool> isShort = false;

void OnShortage()
{
    isShort = true;
    throw std::bad_alloc();
}

}  // namespace

void WatchMemory()
{
    std::set_new_handler(OnShortage);
}

const std::atomic<bool>& GetShortOfMemory()
{
    return isShort;
}
