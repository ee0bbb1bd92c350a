#include <algorithm>
#include <cctype>
#include <ostream>
#include <sstream>
#include <string>

#include "app/commands/commands.h"
#include "app/commands/manual.h"
#include "app/machine/home.h"

namespace app {
namespace {

constexpr char kIntroduction[] =
    "sigilctl loads the library as any host program does and works on one machine: the folder that "
    "--root or SIGIL_ROOT names. It tries a policy and draws its page before anything is changed, "
    "applies it, seals it for delivery, and tells what the machine holds and what is wrong with "
    "it.";

/// Text that troff takes for nothing but text.
std::string Plain(std::string_view text) {
  std::string plain = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char each : text) {
    if (each == '\\')
      plain += "\\e";
    else if (each == '-')
      plain += "\\-";
    else
      plain += each;
  }
  return plain;
}

std::string Bold(std::string_view text) {
  return "\\fB" + Plain(text) + "\\fR";
}

std::string Italic(std::string_view text) {
  return "\\fI" + Plain(text) + "\\fR";
}

/// "-o, --output FILE", with `between` its names.
std::string Form(const Option& option, const char* between) {
  if (option.IsArgument()) return Italic(option.name);
  std::string form;
  for (const std::string& name : option.Names()) form += (form.empty() ? "" : between) + Bold(name);
  return option.value.empty() ? form : form + " " + Italic(option.value);
}

std::string Synopsis(const Command& command) {
  std::string synopsis = Bold(command.name);
  for (const bool isArgument : {false, true})
    for (const Option& option : command.options) {
      if (option.IsArgument() != isArgument) continue;
      const std::string form = Form(option, "|");
      synopsis += option.isNeeded ? " " + form : " [" + form + "]";
    }
  return synopsis;
}

void PrintItem(std::ostream& out, const std::string& head, std::string_view text) {
  out << ".TP\n" << head << "\n" << Plain(text) << ".\n";
}

void PrintCommand(std::ostream& out, const Command& command) {
  out << ".SS " << Synopsis(command) << "\n" << Plain(command.help) << ".\n";
  for (const Option& option : command.options)
    PrintItem(out, Form(option, ", "),
              option.Help() + (option.needs.empty() ? "" : "; with " + option.needs));
}

/// A text of commands.h, by its form.
void PrintParts(std::ostream& out, const char* text) {
  constexpr std::size_t kIndent = 2;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
    if (indent == 0 && line.ends_with(':')) {
      line.pop_back();
      std::ranges::transform(line, line.begin(),
                             [](unsigned char each) { return std::toupper(each); });
      out << ".SH " << line << "\n";
    } else if (indent == kIndent) {
      const std::size_t end = std::min(line.find(' ', indent), line.size());
      const std::size_t next = std::min(line.find_first_not_of(' ', end), line.size());
      out << ".TP\n"
          << Bold(line.substr(indent, end - indent)) << "\n"
          << Plain(line.substr(next)) << "\n";
    } else if (indent > kIndent) {
      out << Plain(line.substr(indent)) << "\n";
    }
  }
}

void PrintExamples(std::ostream& out) {
  out << ".SH EXAMPLES\n.nf\n";
  for (const char* const example : kExamples) out << Plain(example) << "\n";
  out << ".fi\n";
}

}  // namespace

void PrintManual(std::ostream& out, const std::vector<Command>& commands) {
  out << ".\\\" Made by sigilctl print-manual from the definitions of its commands.\n"
      << ".TH SIGILCTL 1 \"\" \"SigilSetting " SIGIL_VERSION "\" \"User Commands\"\n"
      << ".SH NAME\nsigilctl \\- " << Plain(kSummary) << "\n"
      << ".SH SYNOPSIS\n"
      << Bold("sigilctl") << " [" << Form(kRootOption, "|") << "] " << Italic("COMMAND") << " ["
      << Italic("OPTION") << "]... [" << Italic("ARGUMENT") << "]...\n"
      << ".SH DESCRIPTION\n"
      << Plain(kIntroduction) << "\n.SH COMMANDS\n";
  for (const Command& command : commands)
    if (!command.isHidden) PrintCommand(out, command);
  out << ".SH OPTIONS\n";
  for (const Option* const option : {&kRootOption, &kHelpOption, &kVersionOption})
    PrintItem(out, Form(*option, ", "), option->help);
  PrintParts(out, kFooter);
  PrintParts(out, kFiles);
  PrintExamples(out);
  PrintParts(out, kSeeAlso);
}

}  // namespace app
