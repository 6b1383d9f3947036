#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/feed/nxCsvRow.h"
#include "host/feed/nxDataSet.h"
#include "host/feed/nxPackedFile.h"

// One of the files that an import writes: the rows of one product and kind, which it brings into the order of
// their times where they are late by no more than a window, and what is odd about them. Memory is that of the
// window's rows and one block of text. Used by one thread.
class nxImportedProduct
{
public:
    // path: of the file while it is written. window: nanoseconds.
    nxImportedProduct(nxDataSet::File file, const std::string& header, const std::string& path,
                      long long window);

    struct Row
    {
        long long time = 0;
        std::string text;   // the line, with its end
        nxDecimal price;    // to watch for outliers; null: none
        std::string place;  // FILE:LINE, for messages
    };
    // False: the row is later than the window, or the file cannot be written.
    [[nodiscard]] bool Add(Row row);
    [[nodiscard]] bool Finish();
    // Why one of them was false.
    const std::string& GetError() const { return _error; }

    void NoteSize(const nxDecimal& size);
    const nxDataSet::File& GetFile() const { return _file; }
    nxDataSet::File& GetFile() { return _file; }
    const std::string& GetPath() const { return _packed.GetPath(); }
    // What a person should know, a line each.
    std::vector<std::string> GetRemarks() const;

private:
    // The rows of one day, UTC.
    struct Day
    {
        unsigned long long rows = 0, gaps = 0;
        long long last = 0;  // time
        long long longest = 0, longestEnd = 0;
    };
    struct Note
    {
        unsigned long long count = 0;
        std::string first;  // place
        void Add(const std::string& place)
        {
            if (count++ == 0) first = place;
        }
    };

    bool _Write(const Row& row);
    void _Watch(const Row& row);
    void _WatchTime(const Row& row);
    void _WatchPrice(const Row& row);
    std::string _RemarkGaps() const;

    nxDataSet::File _file;
    nxPackedFile _packed;
    const long long _window;
    const bool _isPeriodGiven;
    std::deque<Row> _waiting;  // by time
    long long _newest;
    long long _written;  // the time of the row that was written last
    std::string _lastText, _lastPlace;
    std::string _error;

    Note _sorted, _twice, _zero, _negative, _outliers;
    std::map<long long, Day> _days;
    double _before = 0, _last = 0;  // prices
    std::string _jumpPlace;
    double _jump = 0;
    std::vector<double> _moves;  // the last ones that were no 0, a ring
    std::size_t _moveCount = 0;
    double _median = 0;
    unsigned char _sizePlaces = 0;
    nxDecimal _largestSize = nxDecimalZero;
};
