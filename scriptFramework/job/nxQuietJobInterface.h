#pragma once

#include "scriptFramework/job/nxPartialJobInterface.h"
#include "scriptFramework/job/nxQuietAnswers.h"

// A host that knows nothing and does nothing, and agrees to every subscription: to derive from, so that a
// host states only what it does.
class nxQuietJobInterface : public nxQuietAnswers<nxPartialJobInterface>
{
};
