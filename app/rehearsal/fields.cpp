#include "app/rehearsal/fields.h"

#include <charconv>
#include <cstdio>
#include <type_traits>

#include "app/text/wording.h"

namespace app {
namespace {

template <auto kMember>
FieldValue Get(const peers::WatermarkRecord& mark) {
  return mark.*kMember;
}

}  // namespace

const std::vector<Field>& Fields() {
  using Mark = peers::WatermarkRecord;
  static const std::vector<Field> fields = {
      {"name", &Get<&Mark::name>},
      {"text", &Get<&Mark::text>},
      {"fontSize", &Get<&Mark::fontSize>},
      {"fontName", &Get<&Mark::fontName>},
      {"color", [](const Mark& mark) { return FieldValue(Colour{mark.color}); }},
      {"bold", &Get<&Mark::bold>},
      {"italic", &Get<&Mark::italic>},
      {"underLine", &Get<&Mark::underLine>},
      {"fit", &Get<&Mark::fit>},
      {"opacity", &Get<&Mark::opacity>},
      {"rotate", &Get<&Mark::rotate>},
      {"printPos", &Get<&Mark::printPos>},
      {"positionOption", &Get<&Mark::positionOption>},
      {"xOffset", &Get<&Mark::xOffset>},
      {"yOffset", &Get<&Mark::yOffset>},
      {"repeatFirstAxis", &Get<&Mark::repeatFirstAxis>},
      {"repeatSecondAxis", &Get<&Mark::repeatSecondAxis>},
      {"repeatHSpace", &Get<&Mark::repeatHSpace>},
      {"repeatVSpace", &Get<&Mark::repeatVSpace>},
  };
  return fields;
}

std::string Shown(const FieldValue& value) {
  char text[32] = {};
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "on" : "off";
  if (const auto* words = std::get_if<std::string>(&value)) return Quoted(*words);
  if (const auto* real = std::get_if<double>(&value))
    return {text, std::to_chars(text, text + sizeof text, *real).ptr};
  if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
  std::snprintf(text, sizeof text, "0x%06X", static_cast<unsigned>(std::get<Colour>(value).value));
  return text;
}

Json JsonOf(const peers::WatermarkRecord& mark) {
  Json json;
  for (const Field& field : Fields())
    std::visit(
        [&](const auto& value) {
          if constexpr (std::is_same_v<decltype(value), const Colour&>)
            json[field.name] = value.value;
          else
            json[field.name] = value;
        },
        field.get(mark));
  return json;
}

}  // namespace app
