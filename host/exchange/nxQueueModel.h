#pragma once

#include <span>
#include <string>

// Who leaves a queue when the data show less at a price and nothing was traded: the data do not say where
// those that cancelled stood. A row of the table of queue models; rows live as long as the process.
struct nxQueueModel
{
    const char* name;  // as --queue-model takes it
    const char* help;  // in a few words
    // What is left ahead of an order of the `ahead` lots that the market showed in front of it, once
    // `cancelled` of the `shown` lots at its price have gone without a trade. Neither ahead nor cancelled is
    // above shown, and shown is not 0. What would not fit into what is left, the caller cuts.
    unsigned int (*advance)(unsigned int ahead, unsigned int shown, unsigned int cancelled,
                            unsigned int power);
    bool takesPower;

    // The default first.
    static std::span<const nxQueueModel> GetAll();
};

// A queue model with its power.
struct nxQueueRule
{
    const nxQueueModel* model = &nxQueueModel::GetAll().front();
    unsigned int power = 3;

    // "NAME", or "NAME:POWER" of a model that takes one, from 1 to 9. False, and left alone, for another
    // text.
    [[nodiscard]] bool SetFromText(const std::string& text);
    unsigned int Advance(unsigned int ahead, unsigned int shown, unsigned int cancelled) const
    {
        return model->advance(ahead, shown, cancelled, power);
    }
};
