#include <algorithm>
#include <functional>
#include <iterator>
#include <ostream>
#include <set>
#include <string>

#include "app/commands/commands.h"
#include "app/commands/completion.h"

namespace app {
namespace {

// A word with '=' in it comes in three: the option, '=' and its value.
constexpr char kHead[] = R"(# Completion of sigilctl for bash, made by sigilctl print-completion.

_sigilctl() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} i
  local given=()  # the command and its arguments
  COMPREPLY=()
  if [[ $word == '=' ]]; then
    word=
  elif [[ $before == '=' ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      )";

constexpr char kValue[] = R"()
        if [[ ${COMP_WORDS[i + 1]} == '=' ]]; then i=$((i + 1)); fi
        i=$((i + 1))
        ;;
      -?*) ;;
      *) given+=("${COMP_WORDS[i]}") ;;
    esac
  done

  # What an option takes.
  case "${given[0]} $before" in
)";

constexpr char kOptions[] = R"(  esac

  if [[ $word == -* ]]; then
    case ${given[0]} in
)";

constexpr char kArguments[] = R"(    esac
    return
  fi

  # The next argument.
  case "${given[0]} ${#given[@]}" in
)";

constexpr char kTail[] = R"(  esac
}

_sigilctl_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

complete -F _sigilctl sigilctl
)";

std::string Joined(const std::vector<std::string>& words, const char* between = " ") {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : between) + word;
  return joined;
}

/// For names of options, commands and words, none of which has a quote in it.
std::string Quoted(const std::string& text) {
  return "'" + text + "'";
}

std::string CompleteWords(const std::vector<std::string>& words) {
  return "_sigilctl_words " + Quoted(Joined(words)) + " \"$word\"";
}

/// What completes an argument or an option's value. Files are the shell's own matter.
std::string Complete(const Option& option) {
  if (option.place == Place::kFile) return "compopt -o default";
  if (option.place == Place::kFolder) return "compopt -o dirnames";
  return option.words.empty() ? "" : CompleteWords(option.words);
}

void PrintCase(std::ostream& out, const char* indent, const std::string& pattern,
               const std::string& work) {
  out << indent << pattern << ") " << work << " ;;\n";
}

void PrintValues(std::ostream& out, const std::string& command, const Option& option) {
  if (option.IsArgument() || option.IsFlag()) return;
  std::vector<std::string> patterns;
  for (const std::string& name : option.Names()) patterns.push_back(Quoted(command + " " + name));
  const std::string work = Complete(option);
  PrintCase(out, "    ", Joined(patterns, " | "), (work.empty() ? "" : work + "; ") + "return");
}

void PrintOptions(std::ostream& out, const Command& command) {
  std::vector<std::string> names = {kRootOption.Key(), kHelpOption.Key()};
  for (const Option& option : command.options)
    if (!option.IsArgument()) names.push_back(option.Key());
  PrintCase(out, "      ", command.name, CompleteWords(names));
}

void PrintArguments(std::ostream& out, const Command& command) {
  int place = 0;
  for (const Option& option : command.options) {
    if (!option.IsArgument()) continue;
    const std::string given = Quoted(command.name + " " + std::to_string(++place));
    if (const std::string work = Complete(option); !work.empty())
      PrintCase(out, "    ", given, work);
  }
}

}  // namespace

void PrintCompletion(std::ostream& out, const std::vector<Command>& all) {
  std::vector<Command> commands;
  std::ranges::copy_if(all, std::back_inserter(commands), std::not_fn(&Command::isHidden));
  std::set<std::string> valued = {kRootOption.Key()};
  std::vector<std::string> names;
  for (const Command& command : commands) {
    names.push_back(command.name);
    for (const Option& option : command.options)
      if (!option.IsArgument() && !option.IsFlag())
        for (const std::string& name : option.Names()) valued.insert(name);
  }

  out << kHead << Joined({valued.begin(), valued.end()}, " | ") << kValue;
  PrintCase(out, "    ", "*" + Quoted(" " + kRootOption.Key()), Complete(kRootOption) + "; return");
  for (const Command& command : commands)
    for (const Option& option : command.options) PrintValues(out, command.name, option);
  out << kOptions;
  PrintCase(out, "      ", "''",
            CompleteWords({kRootOption.Key(), kHelpOption.Key(), kVersionOption.Key()}));
  for (const Command& command : commands) PrintOptions(out, command);
  out << kArguments;
  PrintCase(out, "    ", "' 0'", CompleteWords(names));
  for (const Command& command : commands) PrintArguments(out, command);
  out << kTail;
}

}  // namespace app
