#pragma once

// A command as its definition tells it. Parsing, help, manual and completion are made from
// definitions alone.

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace app {

/// What an argument or an option's value names, for a shell that completes it.
enum class Place { kNone, kFile, kFolder };

struct Option {
  std::string name;        ///< "--json", "-o,--output", or "FILE" for an argument.
  std::string value = {};  ///< What an option takes, as "N"; empty for a flag and for an argument.
  std::string help;
  bool isNeeded = false;   ///< It must be there.
  std::string needs = {};  ///< The option without which it means nothing.
  Place place = Place::kNone;
  std::vector<std::string> words = {};  ///< What it may be, as far as that has names.

  bool IsArgument() const { return !name.starts_with('-'); }
  bool IsFlag() const { return !IsArgument() && value.empty(); }
  /// Its names, each on its own.
  std::vector<std::string> Names() const;
  /// The name that Values knows it by: the last of its names.
  std::string Key() const { return Names().back(); }
  /// The help, with the words that it may be.
  std::string Help() const;
};

/// "A3, A4 or Letter".
std::string Listed(const std::vector<std::string>& words);

/// What the command line says: the options that are there, with what they take.
class Values {
 public:
  void Set(const std::string& name, std::string value) { m_values[name] = std::move(value); }
  bool Has(const std::string& name) const { return m_values.contains(name); }
  /// `otherwise` for an option that is not there.
  std::string Text(const std::string& name, const std::string& otherwise = "") const;
  /// The same for a number of 32 bits; UsageError for any other text.
  int Number(const std::string& name, int otherwise) const;

 private:
  std::map<std::string, std::string> m_values;
};

using Action = std::function<int(const Values&)>;  ///< Gives the exit status.

struct Command {
  std::string name;
  std::string help;
  std::vector<Option> options = {};
  Action run;                                         ///< Null where the home lacks the command.
  std::string whyElsewhere = "works on Linux alone";  ///< Told where it is lacked.
  bool needsMachine = true;
  bool isHidden = false;  ///< It is for the making of the package; no help tells it.
};

}  // namespace app
