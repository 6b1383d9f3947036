#include "host/run/nxUnreadParameters.h"

#include <gtest/gtest.h>

namespace {

// A job that was given parameters, read some, and had some changed: names of one letter each.
nxJobOptions MakeJob(const std::string& given, const std::string& read, const std::string& changed)
{
    nxJobOptions job;
    for (const char name : given)
        EXPECT_FALSE(job.parameters.Define({name}, "", "1"));
    for (const char name : read)
        static_cast<void>(job.parameters.Find({name}));
    for (const char name : changed)
        EXPECT_FALSE(job.parameters.Change({name}, "2"));
    return job;
}

}  // namespace

TEST(nxUnreadParameters, TellsWhatNoJobHasHeardOf)
{
    const struct
    {
        nxJobOptions first, second;  // the second defines OnParameter
        const char* tagged;
        std::string notes;
    } rows[] = {
        {MakeJob("ab", "a", ""), MakeJob("ab", "b", ""), "", ""},
        {MakeJob("ab", "a", ""), MakeJob("b", "", ""), "", "b;"},
        {MakeJob("a", "", "b"), MakeJob("", "", "ab"), "", ""},
        {MakeJob("a", "", "c"), MakeJob("ab", "", ""), "c", "a;b;"},
        {MakeJob("a", "xy", ""), MakeJob("", "x", ""), "", "a, asked x, y;"},
    };
    for (const auto& row : rows) {
        nxUnreadParameters unread;
        unread.Add(row.first, false);
        unread.Add(row.second, true);
        for (const char name : std::string(row.tagged))
            unread.NoteTagged({name});
        std::string notes;
        for (const std::string& note : unread.GetNotes()) {
            const std::size_t asked = note.find("; asked for, and not given: ");
            EXPECT_EQ(note.substr(0, asked),
                      "parameter " + note.substr(10, 1) + " is given, and no script reads it");
            notes +=
                note.substr(10, 1) + (asked == note.npos ? "" : ", asked " + note.substr(asked + 28)) + ";";
        }
        EXPECT_EQ(notes, row.notes);
    }
}
