#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/accounts/nxMargin.h"
#include "host/exchange/nxSimulatedExchange.h"
#include "host/feed/nxFileForm.h"
#include "host/jobs/nxJobOptions.h"
#include "host/market/nxAdjustment.h"
#include "host/market/nxBarTerms.h"
#include "host/market/nxProductDescription.h"
#include "host/report/nxOutputBuffer.h"
#include "host/results/nxRoundTrip.h"
#include "host/run/nxParameterChange.h"
#include "host/sandbox/nxRunPulse.h"
#include "scriptFramework/lua/nxScriptLimits.h"
#include "scriptFramework/lua/nxScriptProfile.h"

class nxFeedBlocks;
struct nxResult;
class nxRunFollower;

// What a run is asked to do.
struct nxRunOptions
{
    std::vector<nxJobOptions> jobs;          // at least one, under different names
    std::vector<std::string> modules;        // Lua files in front of every script, in their order
    std::vector<nxParameterChange> changes;  // by time; each fits the jobs' parameters
    std::vector<nxAdjustment> adjustments;   // by time
    nxDecimal capital;  // of each job in each currency, for returns and margin; null: not known
    nxMarginRule margin = nxMarginRule::Tell;  // for orders beyond that, where it is known
    std::vector<std::string> data;
    // Legs are products of this list and no strategy is among its own, as nxProductFile sees to.
    std::vector<nxProductDescription> products;
    nxNamedBars namedBars;       // periods that scripts may ask for beside those that every host knows
    std::string productFile;     // where these come from
    bool watchProducts = false;  // take over what changes in that file; such a run does not repeat
    std::chrono::milliseconds watchInterval{1000};  // of real time, between looks at it
    nxExchangeOptions exchange;  // whether moves in a queue are told follows from the scripts
    nxLatency feedLatency;       // by which market data reach the scripts later than the exchange
    std::string recordFile;      // where to write what leaves the scripts; empty: nowhere
    double equityStep = 0.0;     // change of the profit that the record tells; 0: only at the ends of days
    nxMatching roundTrips = nxMatching::Fifo;
    // Where to write the result, its page, its round trips and its equity; empty: nowhere.
    std::string jsonFile, reportFile, tradesFile, equityFile;
    std::string profileFile;  // where to write the page of where scripts spend their time; empty: nowhere
    unsigned int profileEvery = 997;  // instructions between its samples
    bool profilesMemory = false;      // what grows on the scripts' heaps is told, too
    bool isInEnvelope = false;        // more runs follow, with which the result is written
    std::string storeDirectory;       // where the data stores of scripts are kept; empty: there are none
    std::optional<std::string>
        storeImage;                     // what they begin with, in place of the directory: see nxDataStores
    double storeEvery = 0.0;            // recorded seconds between their saves; 0: when jobs and the run end
    double speed = 0.0;                 // recorded seconds for each real one; 0: as fast as it can
    std::vector<unsigned int> explain;  // numbers of orders whose story is told behind the summary
    nxFeedBlocks* blocks = nullptr;     // several runs go through the same data: see nxRunBatch
    nxRunFollower* follower = nullptr;  // goes through the run step by step; the run makes no threads then
    bool lenient = false;
    nxFileFormOptions form;  // of files in none of our own formats
    bool roundsVolumes = false;
    // The part of the data to run over, from a time on and up to one, in nanoseconds since 1970; and how much
    // of the data before it the collections and prices know already.
    std::optional<long long> from, to;
    long long warmup = 0;
    std::optional<bool> barsBearStart;  // the times in bars files, how far apart they are: see nxFeedOptions
    std::map<std::string, long long, std::less<>> barPeriods;
    std::map<std::string, nxDecimal, std::less<>> lotSizes;  // of products that nothing describes
    bool continueOnError = false;
    bool showProgress = false;
    std::ostream* progress = nullptr;  // where to; null: standard error of the run
    std::string progressLabel;         // in front of it
    nxScriptProfile profile = nxScriptProfile::Base;
    nxScriptLimits limits;                      // of each script
    std::size_t memoryLimit = 0;                // bytes that each script may hold; 0: as `limits` says
    std::chrono::nanoseconds callbackLimit{0};  // of real time that a callback may take; 0: any
    // Another process watches the pulse, and stops what takes too long; the run does not. See nxRunGuard.
    bool isGuarded = false;
    nxRunPulse* pulse = nullptr;             // where to tell what goes on; null: the run's own
    nxOutputBuffer* recordBuffer = nullptr;  // where the record waits to be written; null: its own
    // Asked once at the end of the run, for what the summary should say of the scripts beside.
    std::function<std::vector<std::string>()> getNotes;
    // Told once what the run has come to, but where it could not begin.
    std::function<void(const nxResult&)> onResult;
    // Set from elsewhere, such as a signal handler, to end the run after the current event.
    const std::atomic<bool>* interrupted = nullptr;
    // Set when memory has run out anywhere: the run ends then and says so, even where a script catches the
    // error.
    const std::atomic<bool>* shortOfMemory = nullptr;

    // More than the summary tells.
    bool IsDetailWanted() const
    {
        return !jsonFile.empty() || !reportFile.empty() || !tradesFile.empty() || !equityFile.empty();
    }
};

// As the exit status of a process.
enum class nxRunResult { Done = 0, ScriptFailed = 1, InputFailed = 2 };
