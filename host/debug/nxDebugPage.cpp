#include "host/debug/nxDebugPage.h"

#include <sys/mman.h>

#include <new>

void nxDebugPage::Unmapper::operator()(nxDebugPage* page) const
{
    munmap(page, sizeof(nxDebugPage));
}

nxDebugPage::Pointer nxDebugPage::Make()
{
    void* const memory =
        mmap(nullptr, sizeof(nxDebugPage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return Pointer(memory == MAP_FAILED ? nullptr : new (memory) nxDebugPage);
}
