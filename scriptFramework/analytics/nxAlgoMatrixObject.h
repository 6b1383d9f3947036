#pragma once

#include <string>
#include <vector>

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxScriptCharge;

// Matrix arithmetic over plain tables of rows, the global `matrix`. Keeps nothing between calls. Owned by the
// script engine; no lock of its own.
class nxAlgoMatrixObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoMatrixObject";
    static const nxLuaWrapper<nxAlgoMatrixObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoMatrixObject>::PropertyType Properties[];

    using nxAlgoObject::nxAlgoObject;

    // What the calculator refuses is an error with its reason.
    bool add(nxLuaParameters&, nxLuaResults&);
    bool subtract(nxLuaParameters&, nxLuaResults&);
    bool multiply(nxLuaParameters&, nxLuaResults&);
    bool transpose(nxLuaParameters&, nxLuaResults&);
    bool determinant(nxLuaParameters&, nxLuaResults&);
    bool inverse(nxLuaParameters&, nxLuaResults&);

private:
    using Matrix = std::vector<std::vector<double>>;

    // They charge what is read and what any result and the calculator's work can take beside it.
    static bool _GetOneMatrix(nxLuaParameters& parameters, nxLuaResults& results, Matrix& matrix,
                              nxScriptCharge& charge);
    static bool _GetTwoMatrices(nxLuaParameters& parameters, nxLuaResults& results, Matrix& first,
                                Matrix& second, nxScriptCharge& charge);
};
