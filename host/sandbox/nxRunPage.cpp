#include "host/sandbox/nxRunPage.h"

#include <sys/mman.h>

#include <new>

void nxRunPage::Unmapper::operator()(nxRunPage* page) const
{
    munmap(page, sizeof(nxRunPage));
}

nxRunPage::Pointer nxRunPage::Make()
{
    void* const memory =
        mmap(nullptr, sizeof(nxRunPage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return Pointer(memory == MAP_FAILED ? nullptr : new (memory) nxRunPage);
}
