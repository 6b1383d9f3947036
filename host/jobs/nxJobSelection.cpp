#include "host/jobs/nxJobSelection.h"

#include <set>
#include <string_view>

#include "base/values/nxStringHelper.h"

std::optional<std::string> nxJobSelection::SetFromText(const std::string& text)
{
    std::set<std::string> given;
    for (std::string_view rest = text;;) {
        const std::string_view part = rest.substr(0, rest.find(','));
        const std::size_t equals = part.find('=');
        if (equals == part.npos) return "\"" + std::string(part) + "\" is no KEY=VALUE";
        const std::string key(part.substr(0, equals));
        const std::string value(part.substr(equals + 1));
        if (!given.insert(key).second) return "key \"" + key + "\" is given twice";
        const auto refuse = [&](const std::string& reason) {
            return key + " \"" + value + "\" is " + reason;
        };
        if (key == "product") {
            product = value;
        } else if (key == "side") {
            if (value != "BUY" && value != "SELL") return refuse("neither BUY nor SELL");
            side = value;
        } else if (key == "volume") {
            unsigned int number = 0;
            const nxErrorEnum error = nxStringHelper::SetFromString(value, number);
            volume.SetValue(number);
            if (!error.IsSuccess() || !volume.IsValid())
                return refuse("no whole number from 0 to 4294967293");
        } else if (key == "price") {
            if (!price.SetFromString(value).IsSuccess()) return refuse("no decimal number");
        } else if (key == "spread") {
            spread = value;
        } else {
            return "unknown key \"" + key + "\"; known are product, side, volume, price, spread";
        }
        if (part.size() == rest.size()) return std::nullopt;
        rest.remove_prefix(part.size() + 1);
    }
}
