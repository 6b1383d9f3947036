#pragma once

#include <array>

// The functions that a script may define for the library to call, in the order in which reports list them.
// Each name is written here and nowhere else in the code.
#define NX_CALLBACKS(callback)                                                                               \
    callback(OnInit) callback(OnPrice) callback(OnMarketDepth) callback(OnProductState)                      \
        callback(OnPriceTradeVolumes) callback(OnTickData) callback(OnTradeWindowEvent) callback(OnPosition) \
            callback(OnOrderNew) callback(OnOrderWorking) callback(OnOrderFill) callback(OnOrderCompleted)   \
                callback(OnOrderCancelled) callback(OnOrderRejected) callback(OnOrderAmendRejected)          \
                    callback(OnOrderCancelRejected) callback(OnOrderQPosition) callback(OnTimer)             \
                        callback(OnParameter) callback(OnJobChanged) callback(OnJobParametersChanged)        \
                            callback(OnVorantJobNew) callback(OnVorantJobStarted)                            \
                                callback(OnVorantJobStopped) callback(OnVorantJobStatusUpdate)               \
                                    callback(OnVorantJobUpdate) callback(OnShutdown)

#define NX_CALLBACK_ENUMERATOR(name) name,
enum class nxCallback { NX_CALLBACKS(NX_CALLBACK_ENUMERATOR) };
#undef NX_CALLBACK_ENUMERATOR

#define NX_CALLBACK_NAME(name) #name,
inline constexpr std::array nxCallbackNames = {NX_CALLBACKS(NX_CALLBACK_NAME)};
#undef NX_CALLBACK_NAME
#undef NX_CALLBACKS

constexpr const char* nxGetCallbackName(nxCallback callback)
{
    return nxCallbackNames[static_cast<std::size_t>(callback)];
}
