#include "host/sweep/nxSweepDocument.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/report/nxCsvWriter.h"
#include "host/report/nxResultSections.h"
#include "host/report/nxResultText.h"
#include "host/results/nxMeasures.h"
#include "host/sweep/nxSlurmScripts.h"
#include "host/sweep/nxSweepSummary.h"

namespace {

using State = nxSweepJudge::State;
using Role = nxSweepPart::Role;

constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();

const char* GetStateName(State state)
{
    static constexpr const char* names[] = {"missing", "done", "failed", "constrained"};
    return names[static_cast<std::size_t>(state)];
}

// Of a point over the parts by which it is judged: the mean where there are several.
double GetMeasure(const nxSweepTable& table, std::size_t point, std::size_t measure,
                  const std::vector<std::size_t>& parts)
{
    double sum = 0.0;
    for (const std::size_t part : parts) {
        const nxSweepOutcome* const outcome = table.Find(point, part);
        sum += outcome == nullptr || outcome->HasFailed() ? Unknown : outcome->measures[measure];
    }
    return parts.empty() ? Unknown : sum / static_cast<double>(parts.size());
}

std::vector<std::size_t> GetJudged(const nxSweepTable& table)
{
    std::vector<std::size_t> parts = table.GetParts(Role::Whole);
    return parts.empty() ? table.GetParts(Role::Train) : parts;
}

class Document
{
public:
    Document(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge)
        : _json(out), _table(table), _judge(judge)
    {
    }

    void Write(const nxLuckReport& luck, const nxSweepDocument::Context& context)
    {
        _json.BeginObject();
        _json.Key("sweep").Count(1);
        _json.Key("program").Text(Find(context.facts, "program"));
        _json.Key("title").Text(context.title);
        WriteFacts(context.facts);
        WritePlan();
        WriteTexts("rerun", context.rerun);
        _json.Key("pages").BeginObject();
        for (const auto& [point, page] : context.pages)
            _json.Key(std::to_string(point)).Text(page);
        _json.EndObject();
        WriteDimensions();
        _json.Key("measures");
        nxWriteDefinitions(_json);
        WritePoints();
        WriteBest();
        WriteLuck(luck);
        WriteTexts("notes", nxSweepSummary::GetNotes(_table, _judge));
        WriteTiming();
        _json.EndObject();
    }

private:
    static std::string Find(const std::map<std::string, std::string>& facts, const std::string& name)
    {
        const auto found = facts.find(name);
        return found == facts.end() ? std::string() : found->second;
    }

    void WriteTexts(const char* name, const std::vector<std::string>& texts)
    {
        _json.Key(name).BeginArray();
        for (const std::string& text : texts)
            _json.Text(text);
        _json.EndArray();
    }
    void WriteIndex(std::optional<std::size_t> index) { index ? _json.Count(*index) : _json.Null(); }

    // What the results follow from.
    void WriteFacts(const std::map<std::string, std::string>& facts)
    {
        _json.Key("facts").BeginArray();
        const auto write = [this](const std::string& name, const std::string& value) {
            _json.BeginObject();
            _json.Key("name").Text(name);
            _json.Key("value").Text(value);
            _json.EndObject();
        };
        write("command", GetCommand(facts));
        const auto items = nlohmann::json::parse(Find(facts, "identity"), nullptr, false);
        if (items.is_object())
            for (const auto& [name, values] : items.items()) {
                std::string text;
                for (const auto& value : values)
                    if (value.is_string()) text += (text.empty() ? "" : ", ") + value.get<std::string>();
                write(name, text);
            }
        _json.EndArray();
    }
    static std::string GetCommand(const std::map<std::string, std::string>& facts)
    {
        std::vector<std::string> command = {"algoserver", "sweep"};
        const auto words = nlohmann::json::parse(Find(facts, "command"), nullptr, false);
        if (words.is_array())
            for (const auto& word : words)
                if (word.is_string()) command.push_back(word.get<std::string>());
        return nxSlurmScripts::GetCommand(command);
    }

    void WritePlan()
    {
        static constexpr const char* methods[] = {"grid", "random", "sobol", "tpe", "cmaes"};
        const nxPlan& plan = _table.plan;
        _json.Key("plan").BeginObject();
        for (const bool isMinimised : {false, true}) {
            _json.Key(isMinimised ? "minimise" : "maximise");
            plan.IsMinimised() == isMinimised ? _json.Text(plan.GetObjectiveText()) : _json.Null();
        }
        WriteExpressions("constraints", plan.GetConstraints());
        WriteExpressions("conditions", plan.GetConditions());
        _json.Key("method").Text(methods[static_cast<std::size_t>(plan.GetMethod())]);
        _json.Key("seed").Count(plan.GetSeed());
        _json.EndObject();
    }

    void WriteExpressions(const char* name, const std::vector<nxExpression>& expressions)
    {
        _json.Key(name).BeginArray();
        for (const nxExpression& expression : expressions)
            _json.Text(expression.GetText());
        _json.EndArray();
    }

    // All values that any point has, in their order.
    void WriteDimensions()
    {
        _json.Key("dimensions").BeginArray();
        for (std::size_t i = 0; i < _table.plan.GetDimensions().size(); ++i) {
            const nxDimension& dimension = _table.plan.GetDimensions()[i];
            std::vector<std::string>& values = _values.emplace_back();
            for (const nxPlanPoint& point : _table.points)
                values.push_back(point.values[i]);
            Sort(dimension, values);
            _json.BeginObject();
            _json.Key("name").Text(dimension.GetShortName());
            _json.Key("kind").Text(dimension.GetKind() == nxDimension::Kind::Option ? "option" : "parameter");
            _json.Key("ordered").Bool(dimension.IsOrdered());
            WriteTexts("values", values);
            _json.EndObject();
        }
        _json.EndArray();
    }
    static void Sort(const nxDimension& dimension, std::vector<std::string>& values)
    {
        constexpr unsigned long long mostListed = 10'000;
        std::ranges::sort(values);
        values.erase(std::unique(values.begin(), values.end()), values.end());
        if (dimension.IsOrdered()) {
            std::ranges::sort(values, {},
                              [](const std::string& value) { return nxDimension::GetNumber(value); });
        } else if (dimension.GetCount() <= mostListed) {
            std::vector<std::string> listed;
            for (unsigned long long place = 0; place < dimension.GetCount(); ++place)
                if (std::ranges::binary_search(values, dimension.GetText(place)))
                    listed.push_back(dimension.GetText(place));
            values = std::move(listed);
        }
    }

    void WritePoints()
    {
        std::vector<std::size_t> indexes(_table.points.size());
        for (std::size_t i = 0; i < indexes.size(); ++i)
            indexes[i] = i;
        const auto& points = _judge.GetPoints();
        _json.Key("points").BeginObject();
        _json.Column("number", indexes, [](std::size_t i) { return i; });
        _json.Key("places").BeginArray();
        for (std::size_t dimension = 0; dimension < _values.size(); ++dimension)
            WritePlaces(dimension);
        _json.EndArray();
        _json.Key("state").BeginArray();
        for (const auto& point : points)
            _json.Text(GetStateName(point.state));
        _json.EndArray();
        _json.Key("failure").BeginArray();
        for (const auto& point : points)
            point.failure.empty() ? _json.Null() : _json.Text(point.failure);
        _json.EndArray();
        _json.Column("objective", points, [](const auto& point) { return point.objective; });
        _json.Column("inSample", points, [](const auto& point) { return point.inSample; });
        _json.Column("outOfSample", points, [](const auto& point) { return point.outOfSample; });
        _json.Column("seconds", indexes, [&](std::size_t i) { return GetCost(i).seconds; });
        _json.Column("memory", indexes, [&](std::size_t i) { return GetCost(i).memory; });
        _json.Key("measures").BeginObject();
        const std::vector<std::size_t> judged = GetJudged(_table);
        for (std::size_t measure = 0; measure < nxMeasure::GetAll().size(); ++measure)
            _json.Column(nxMeasure::GetAll()[measure].name, indexes,
                         [&](std::size_t i) { return GetMeasure(_table, i, measure, judged); });
        _json.EndObject();
        _json.EndObject();
        _json.Key("samples").BeginObject();
        const auto [inSample, outOfSample] = _judge.GetSampleNames();
        _json.Key("inSample").Text(inSample);
        _json.Key("outOfSample").Text(outOfSample);
        _json.EndObject();
    }
    void WritePlaces(std::size_t dimension)
    {
        std::map<std::string_view, std::size_t> places;
        for (const std::string& value : _values[dimension])
            places.emplace(value, places.size());
        // By the order of the values, not of the map.
        std::size_t place = 0;
        for (const std::string& value : _values[dimension])
            places[value] = place++;
        _json.BeginArray();
        for (const nxPlanPoint& point : _table.points)
            _json.Count(places[point.values[dimension]]);
        _json.EndArray();
    }
    struct Cost
    {
        double seconds = 0.0;
        unsigned long long memory = 0;
    };
    Cost GetCost(std::size_t point) const
    {
        Cost cost;
        for (auto run = _table.outcomes.lower_bound({point, 0});
             run != _table.outcomes.end() && run->first.point == point; ++run)
        {
            cost.seconds += run->second.seconds;
            cost.memory = std::max(cost.memory, run->second.memory);
        }
        return cost;
    }

    void WriteDays(const nxDaySpan& span)
    {
        _json.BeginArray();
        _json.Text(nxResultText::GetDate(span.from));
        _json.Text(nxResultText::GetDate(span.to - 1));
        _json.EndArray();
    }
    void WriteSplits()
    {
        _json.Key("splits").BeginArray();
        for (std::size_t i = 0; i < _judge.GetSplits().size(); ++i) {
            const nxSweepJudge::Split& split = _judge.GetSplits()[i];
            _json.BeginObject();
            _json.Key("train").BeginArray();
            for (const std::size_t part : _table.GetParts(Role::Train, i))
                WriteDays(_table.parts[part].span);
            _json.EndArray();
            _json.Key("test");
            WriteDays(_table.parts[_table.GetParts(Role::Test, i).front()].span);
            _json.Key("chosen");
            WriteIndex(split.chosen);
            _json.Key("inSample").Number(split.inSample);
            _json.Key("outOfSample").Number(split.outOfSample);
            _json.EndObject();
        }
        _json.EndArray();
    }
    void WriteEquity(const char* name, const nxSweepJudge::Equity& equity)
    {
        _json.Key(name);
        if (equity.days.empty()) return _json.Null();
        _json.BeginObject();
        _json.Column("ms", equity.days, [](long long day) {
            return nxResultText::GetMilliseconds(nxTimeSplits::GetTime(day + 1));
        });
        _json.Column("profit", equity.profits, [](double profit) { return profit; });
        _json.EndObject();
    }
    void WriteOutcome(std::size_t point, std::size_t part)
    {
        _json.Key("objective").Number(_table.GetObjective(point, part));
        const nxSweepOutcome& outcome = *_table.Find(point, part);
        _json.Key("measures").BeginObject();
        for (std::size_t i = 0; i < outcome.measures.size(); ++i)
            _json.Key(nxMeasure::GetAll()[i].name).Number(outcome.measures[i]);
        _json.EndObject();
    }
    void WriteHoldout(std::size_t best)
    {
        _json.Key("holdout");
        const std::vector<std::size_t> parts = _table.GetParts(Role::Holdout);
        if (parts.empty() || _table.Find(best, parts.front()) == nullptr) return _json.Null();
        const nxDaySpan span = _table.parts[parts.front()].span;
        _json.BeginObject();
        _json.Key("from").Text(nxResultText::GetDate(span.from));
        _json.Key("to").Text(nxResultText::GetDate(span.to - 1));
        WriteOutcome(best, parts.front());
        _json.EndObject();
    }
    void WriteVariants(std::size_t best)
    {
        _json.Key("variants").BeginArray();
        for (const std::size_t part : _table.GetParts(Role::Variant)) {
            const nxSweepOutcome* const outcome = _table.Find(best, part);
            if (outcome == nullptr) continue;
            _json.BeginObject();
            _json.Key("name").Text(_table.parts[part].name);
            WriteOutcome(best, part);
            _json.Key("failure");
            outcome->HasFailed() ? _json.Text(outcome->failure) : _json.Null();
            _json.EndObject();
        }
        _json.EndArray();
    }
    void WriteBest()
    {
        const auto best = _judge.GetBest();
        _json.Key("best");
        WriteIndex(best);
        WriteSplits();
        WriteEquity("walk", _judge.GetWalk());
        WriteEquity("equity", _judge.GetEquity());
        if (best) {
            WriteHoldout(*best);
            WriteVariants(*best);
            return;
        }
        _json.Key("holdout").Null();
        _json.Key("variants").BeginArray();
        _json.EndArray();
    }

    template <class Part, class WriteMembers>
    void WriteOptional(const char* name, const std::optional<Part>& part, WriteMembers write)
    {
        _json.Key(name);
        if (!part) return _json.Null();
        _json.BeginObject();
        write(*part);
        _json.EndObject();
    }
    void WriteLuck(const nxLuckReport& luck)
    {
        _json.Key("luck");
        if (!_judge.GetBest()) {
            _json.Null();
            _json.Key("verdict").Text("There is no best run.");
            return;
        }
        _json.BeginObject();
        _json.Key("tried").Count(luck.tried);
        _json.Key("days").Count(luck.days);
        _json.Key("sharpe").Number(luck.sharpe);
        _json.Key("probabilistic").Number(luck.probabilistic);
        _json.Key("deflated").Number(luck.deflated);
        _json.Key("bestOfLuck").Number(luck.bestOfLuck);
        WriteOptional("overfitting", luck.overfitting, [this](const nxOverfitting& part) {
            _json.Key("probability").Number(part.probability);
            _json.Key("loss").Number(part.loss);
            _json.Key("halves").Count(part.halves);
        });
        WriteOptional("realityCheck", luck.realityCheck, [this](const nxRealityCheck& part) {
            _json.Key("white").Number(part.white);
            _json.Key("spa").Number(part.spa);
            _json.Key("spaLower").Number(part.spaLower);
            _json.Key("spaUpper").Number(part.spaUpper);
        });
        WriteOptional("neighbours", luck.neighbours, [this](const nxNeighbours& part) {
            _json.Key("count").Count(part.count);
            _json.Key("mean").Number(part.mean);
            _json.Key("worst").Number(part.worst);
            _json.Key("stability").Number(part.stability);
        });
        _json.Key("rankCorrelation").Number(luck.rankCorrelation);
        _json.EndObject();
        _json.Key("verdict").Text(luck.GetVerdict());
    }
    void WriteTiming()
    {
        double seconds = 0.0;
        for (const auto& [task, outcome] : _table.outcomes)
            seconds += outcome.seconds;
        _json.Key("timing").BeginObject();
        _json.Key("seconds").Number(seconds);
        _json.EndObject();
    }

    nxJsonWriter _json;
    const nxSweepTable& _table;
    const nxSweepJudge& _judge;
    std::vector<std::vector<std::string>> _values;  // by dimension
};

}  // namespace

void nxSweepDocument::Write(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge,
                            const nxLuckReport& luck, const Context& context)
{
    Document(out, table, judge).Write(luck, context);
    out << "\n";
}

void nxSweepDocument::WriteTable(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge)
{
    const auto number = [](double value) {
        return std::isnan(value) ? std::string() : nxJsonWriter::GetNumber(value);
    };
    nxCsvWriter csv(out);
    std::vector<std::string> cells = {"run"};
    for (const nxDimension& dimension : table.plan.GetDimensions())
        cells.push_back(dimension.GetShortName());
    cells.insert(cells.end(), {"state", "objective", "inSample", "outOfSample"});
    for (const nxMeasure& measure : nxMeasure::GetAll())
        cells.emplace_back(measure.name);
    cells.emplace_back("failure");
    csv.Write(cells);
    const std::vector<std::size_t> judged = GetJudged(table);
    for (std::size_t i = 0; i < table.points.size(); ++i) {
        const nxSweepJudge::Point& point = judge.GetPoints()[i];
        cells = {std::to_string(i)};
        cells.insert(cells.end(), table.points[i].values.begin(), table.points[i].values.end());
        cells.insert(cells.end(), {GetStateName(point.state), number(point.objective), number(point.inSample),
                                   number(point.outOfSample)});
        for (std::size_t measure = 0; measure < nxMeasure::GetAll().size(); ++measure)
            cells.push_back(number(GetMeasure(table, i, measure, judged)));
        cells.push_back(point.failure);
        csv.Write(cells);
    }
}
