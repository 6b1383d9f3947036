#include "apps/algoserver/layouts.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "host/feed/nxFeedLayout.h"

namespace {

void List(std::ostream& out)
{
    for (const nxFeedLayout& layout : nxFeedLayout::GetAll()) {
        const char* const kind = layout.kind == nxFeedKind::Bar                      ? "bars"
                                 : layout.kind == nxFeedKind::Depth                  ? "depth"
                                 : layout.columns.find("bid") != layout.columns.npos ? "quotes"
                                                                                     : "trades";
        out << fmt::format("{:<22} {:<7} {:<7} {}\n", layout.name, kind,
                           layout.isByPlace || layout.isAsked ? "--layout" : "told", layout.title);
    }
}

}  // namespace

void AddLayoutsCommand(CLI::App& app, int& status)
{
    CLI::App& layouts = *app.add_subcommand("layouts", "List the layouts of files that --layout knows");
    layouts.footer(
        "Columns: name, what the files hold, whether --layout must name it or the header row tells "
        "it, and who writes it.");
    layouts.callback([&status] {
        List(std::cout);
        status = std::cout.flush().fail() ? 2 : 0;
    });
}
