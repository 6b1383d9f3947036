#include "scriptFramework/analytics/nxAlgoLibraryObject.h"

#include <dlfcn.h>

#include <vector>

using Self = nxAlgoLibraryObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"call", &Self::call},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {nullptr, nullptr, nullptr},
};

namespace {

constexpr const char* Path = "/home/qlxadm/myLibrary/myLibrary.so";

}  // namespace

nxAlgoLibraryObject::nxAlgoLibraryObject(nxAlgoJobInterface* job)
    : nxAlgoObject(job), _library(std::make_shared<Library>(dlopen(Path, RTLD_NOW | RTLD_LOCAL)))
{
}

bool nxAlgoLibraryObject::call(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::vector<double> values;
    if (!parameters.Parameter(1).GetAsDoubleVector(values)) return true;
    results.Add(std::vector<double>());
    return true;
}
