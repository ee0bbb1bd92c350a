#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/rehearsal/document.h"

namespace app {

/// Makes a document of the events of a parser. Texts are UTF-8; a line is that of the event.
class DocumentBuilder {
 public:
  struct Attribute {
    std::string_view name;  ///< Without its prefix.
    std::string_view value;
    bool isPlain = true;  ///< In no namespace.
    bool isXml = false;   ///< Of XML's own, as xml:space.
  };

  /// `isPlain`: the node is in no namespace.
  void Start(std::string_view name, bool isPlain, std::span<const Attribute> attributes, long line);
  void AddText(std::string_view text) {
    if (m_text != nullptr) *m_text += text;
  }
  void End();

  PolicyDocument Take() { return std::move(m_document); }

 private:
  /// Where a node stands.
  enum class Place {
    kDocument,
    kRoot,
    kHle,
    kWatermark,
    kPolicies,
    kPolicy,
    kList,
    kListed,
    kScope,
    kElements,
    kElement,
    kProperty,
    kStranger,  ///< Or inside one.
  };

  struct Form;
  static const Form kForms[];

  struct Open {
    Place place;
    std::string name;
  };

  const Form* FormOf(std::string_view name, Place parent);
  void Enter(Place place, const std::string& name, const std::string& id, long line);
  void AddStranger(std::string name, std::string parent, long line);

  PolicyDocument m_document;
  std::vector<Open> m_open;
  bool m_hasHle = false;
  PolicyElement* m_element = nullptr;  ///< The innermost ones.
  PolicyInfo* m_policy = nullptr;
  std::string* m_text = nullptr;  ///< Takes the text inside an ID, a scope or a property,
  std::size_t m_textDepth = 0;    ///< which is so many nodes deep.
};

}  // namespace app
