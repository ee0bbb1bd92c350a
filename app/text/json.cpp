#include "app/text/json.h"

#include <ostream>
#include <sstream>

#include "platform/visible_text.h"

namespace app {

void PrintJson(std::ostream& out, const Json& value) {
  std::istringstream lines(value.dump(2, ' ', false, Json::error_handler_t::replace));
  // Between the line ends of the layout a control can only stand within a text.
  for (std::string line; std::getline(lines, line);) out << platform::Visible(line) << "\n";
}

}  // namespace app
