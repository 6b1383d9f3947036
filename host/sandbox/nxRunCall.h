#pragma once

#include <optional>
#include <string>

#include "scriptFramework/job/nxCallback.h"

// A call into a script: of which job, and what was called.
struct nxRunCall
{
    enum class Part { Loading, Callback, Closing };
    static constexpr unsigned int LoadingMark = 0xff, ClosingMark = 0xfe;  // in place of a callback

    std::size_t job = 0;  // its index
    Part part = Part::Loading;
    nxCallback callback = nxCallback::OnInit;  // of Part::Callback

    // As a person is told: "OnPrice".
    const char* GetName() const
    {
        switch (part) {
            case Part::Loading:
                return "the main part of the script";
            case Part::Callback:
                return nxGetCallbackName(callback);
            case Part::Closing:
                break;
        }
        return "the script's last finalizers";
    }

    // In 32 bits, and back; none of a number that is of no call.
    unsigned int Pack() const
    {
        const unsigned int what = part == Part::Loading    ? LoadingMark
                                  : part == Part::Callback ? static_cast<unsigned int>(callback)
                                                           : ClosingMark;
        return static_cast<unsigned int>(job & 0xffffff) << 8 | what;
    }
    static std::optional<nxRunCall> Unpack(unsigned int packed)
    {
        const unsigned int what = packed & 0xff;
        if (what == LoadingMark) return nxRunCall{packed >> 8, Part::Loading};
        if (what == ClosingMark) return nxRunCall{packed >> 8, Part::Closing};
        if (what >= nxCallbackNames.size()) return std::nullopt;
        return nxRunCall{packed >> 8, Part::Callback, static_cast<nxCallback>(what)};
    }
};
