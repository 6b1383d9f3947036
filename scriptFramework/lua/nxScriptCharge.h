#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "scriptFramework/lua/nxScriptAccount.h"

// The bytes that one object holds for a script, charged to its account until the object goes. A copy is
// charged as much. For the thread that its object belongs to.
class nxScriptCharge
{
public:
    using Account = std::shared_ptr<nxScriptAccount>;

    nxScriptCharge() = default;
    explicit nxScriptCharge(const Account& account) : _account(account) {}
    nxScriptCharge(const nxScriptCharge& other) : _account(other._account) { SetAnyway(other._bytes); }
    nxScriptCharge(nxScriptCharge&& other) noexcept
        : _account(std::move(other._account)), _bytes(std::exchange(other._bytes, 0))
    {
    }
    nxScriptCharge& operator=(nxScriptCharge other) noexcept
    {
        std::swap(_account, other._account);
        std::swap(_bytes, other._bytes);
        return *this;
    }
    ~nxScriptCharge()
    {
        if (_account != nullptr && _bytes != 0) _account->Release(_bytes);
    }

    const Account& GetAccount() const { return _account; }
    std::size_t GetBytes() const { return _bytes; }

    // False, with nothing changed, when the limit refuses it. On the script's thread.
    [[nodiscard]] bool Set(const Account& account, std::size_t bytes)
    {
        if (_account != account) *this = nxScriptCharge(account);
        if (bytes > _bytes && !_account->Charge(bytes - _bytes)) return false;
        if (bytes < _bytes) _account->Release(_bytes - bytes);
        _bytes = bytes;
        return true;
    }
    // On any thread; nothing without an account.
    void SetAnyway(std::size_t bytes)
    {
        if (_account == nullptr || bytes == _bytes) return;
        if (bytes > _bytes) {
            _account->ChargeAnyway(bytes - _bytes);
        } else {
            _account->Release(_bytes - bytes);
        }
        _bytes = bytes;
    }

private:
    Account _account;
    std::size_t _bytes = 0;
};
