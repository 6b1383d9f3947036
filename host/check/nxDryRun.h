#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/nxParameterSet.h"
#include "host/jobs/nxScriptSource.h"
#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"
#include "scriptFramework/job/nxAlgoScriptValidator.h"
#include "scriptFramework/job/nxQuietAnswers.h"
#include "scriptFramework/lua/nxScriptProfile.h"
#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"

// Tries a script on a market that is not there: loads it and runs its OnInit. Any product exists and has a
// price, subscriptions succeed, orders can be made and are never answered, there is a selection, only the
// given parameters are there and no store that the script does not create, no other job runs. Nothing the
// script does leaves it, and it ends after a while in any case. For one script and one thread.
class nxDryRun : public nxQuietAnswers<nxAlgoScriptValidator>
{
public:
    explicit nxDryRun(nxParameterSet parameters = {}, nxScriptProfile profile = nxScriptProfile::Base);
    ~nxDryRun() override;

    // What stopped the script, told in its own files; null when OnInit came to its end, or when there is
    // none.
    [[nodiscard]] std::optional<nxScriptFailure> Try(const nxScriptSource& source);
    // Whether the script, once loaded, has a function OnInit.
    bool HasOnInit() const { return _hasOnInit; }
    // The parameters that the script asked for by then, in the order of the first question.
    const std::vector<std::string>& GetAskedParameters() const { return _asked; }

    nxAlgoProductObject* GetProduct(const std::string& productName) override;
    nxAlgoVorantJobCollectionObject* GetVorantJobs() override { return &_jobs; }
    nxAlgoOrderCollectionObject* GetOrders() override { return &_orders; }
    nxAlgoOrderCollectionObject* GetJobOrders() override { return &_orders; }
    nxAlgoOrderObject* CreateOrder(nxAlgoProductObject* product, const std::string& side,
                                   const std::string& type, const std::string& exec, const std::string& time,
                                   const std::string& spreadSpec) override;
    nxAlgoOrderObject* GetOrder(unsigned int id) override { return _orders.GetOrder(id); }
    nxVolume GetID() override { return nxVolume(1); }
    bool SetParameter(const std::string&, const std::string&) override { return true; }
    bool SendUserLog(const std::map<std::string, std::string>&, std::string&) override { return true; }
    nxVorantParameter* GetParameter(const std::string& name) const override;
    std::string GetSelectedProduct() override { return "PRODUCT"; }
    unsigned int GetSelectedVolume() const override { return 1; }
    double GetSelectedPrice() const override { return 100.0; }
    std::string GetSelectedSide() override { return "BUY"; }
    nxAlgoDataSeriesObject* CreateDataSeries() override;
    nxAlgoDataStoreObject* GetDataStore(const std::string& name, bool create) override;
    std::string GetAccount() override { return "ACCOUNT"; }
    bool HasContext() override { return true; }
    bool IsInOnInit() override { return _inOnInit; }
    nxDecimal GetPandL(const nxCurrencyEnum&) override { return nxDecimal(0, 1, 0); }
    bool SetChartLine(const std::string&, const std::string&, double, unsigned int) override { return true; }
    bool RemoveChartLine(const std::string&, const std::string&) override { return true; }

private:
    class NoJobs : public nxAlgoVorantJobCollectionObject
    {
    public:
        using nxAlgoVorantJobCollectionObject::nxAlgoVorantJobCollectionObject;

    protected:
        unsigned int _GetCount() override { return 0; }
        nxAlgoVorantJobObject* _GetVorantJob(unsigned int) override { return nullptr; }
    };

    class Orders : public nxAlgoOrderCollectionObject
    {
    public:
        using nxAlgoOrderCollectionObject::nxAlgoOrderCollectionObject;

        nxAlgoOrderObject* GetOrder(unsigned int index) override
        {
            return index == 0 || index > orders.size() ? nullptr : orders[index - 1].get();
        }
        unsigned int GetCount() override { return static_cast<unsigned int>(orders.size()); }

        std::vector<std::unique_ptr<nxAlgoOrderObject>> orders;
    };

    const nxParameterSet _parameters;
    const nxScriptProfile _profile;
    NoJobs _jobs{this};
    Orders _orders{this};
    std::map<std::string, std::unique_ptr<nxAlgoProductObject>> _products;
    std::vector<std::unique_ptr<nxAlgoDataSeriesObject>> _series;
    std::map<std::string, std::unique_ptr<nxAlgoDataStoreObject>> _stores;
    mutable std::vector<std::string> _asked;
    bool _inOnInit = false;
    bool _hasOnInit = false;
};
