// `tenora complete LINE WORD`: what can stand at the end of a command line that is being typed. The
// shell's completion calls it; the help does not list it.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "startup/own_parser.h"

namespace tenora {

inline constexpr std::string_view kCompleteWord = "complete";

// Prints the texts with which the shell may replace WORD, one a line, as ShellLine::Completions
// gives them: commands, options and their values, of the agency's data folder the templates, the
// recipients and the logs of unfinished runs. Nothing is written and nothing raised: data that
// cannot be read has no names. The result is the exit status: 0, or 1 where the name of a file can
// stand and nothing else fits, so that the shell offers files; 2 for other arguments.
int PrintCompletions(const std::vector<std::string>& arguments, std::ostream& output);

}  // namespace tenora
