#pragma once

#include <string>

#include "apps/algoserver/commandTree.h"

// What a shell reads to complete the program's commands, options and values. Names after --param are asked of
// `algoserver check --parameters`, since a script knows them.
std::string MakeBashCompletion(const CommandTree& program);
std::string MakeZshCompletion(const CommandTree& program);
std::string MakeFishCompletion(const CommandTree& program);

// The files of completion/, in which @NAME@ stands for what is made of the commands.
const std::string& GetBashCompletionText();
const std::string& GetZshCompletionText();
const std::string& GetFishCompletionText();
