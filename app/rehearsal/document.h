#pragma once

// A policy's text by its parts, as the system's parser reads it (libxml2 on Linux): what is
// written, and on which line.
//
// Nothing here knows what a part becomes. Texts are UTF-8; lines count from 1. Time and memory grow
// in step with the text.

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace app {

/// A property of an element, or the scope of a policy.
struct Property {
  std::string name;
  std::string text;  ///< As it is written, with the white space at its ends.
  long line = 0;
};

/// All nodes `Element` of one ID. There should be one.
struct PolicyElement {
  std::string id;
  std::vector<long> lines;           ///< Of the nodes.
  std::vector<Property> properties;  ///< Of all nodes, in the document's order.
};

/// An entry of a policy's list of elements.
struct ListedId {
  std::string id;  ///< Without the white space at its ends.
  long line = 0;
};

/// All nodes `PolicyInfo` of one number. There should be one.
struct PolicyInfo {
  std::string id;
  std::vector<long> lines;
  std::vector<ListedId> listed;
  std::vector<Property> scopes;
};

/// A node or an attribute of a name that a policy does not have in that place.
struct Stranger {
  std::string name;  ///< An attribute's begins with "@".
  std::string parent;
  long line = 0;
};

struct PolicyDocument {
  std::vector<PolicyElement> elements;
  std::vector<PolicyInfo> policies;
  std::vector<Stranger> strangers;

  std::map<std::string, std::size_t> elementPlaces;  ///< By ID, in `elements`.
  std::map<std::string, std::size_t> policyPlaces;

  /// Null for an ID that no element has, and for a number that no policy has.
  const PolicyElement* FindElement(const std::string& id) const;
  const PolicyInfo* FindPolicy(int id) const;
};

/// Reads a text that the XML service of the machine takes, so that nothing in it is a trap for the
/// parser. Throws std::runtime_error for a text that is no document, and std::bad_alloc.
PolicyDocument ReadDocument(const std::string& text);

/// Makes a document of a parser's events, for the two homes' ReadDocument. Texts are UTF-8.
class DocumentBuilder {
 public:
  struct Attribute {
    std::string name;  ///< Without its prefix.
    std::string value;
    bool isPlain = true;  ///< In no namespace.
    bool isXml = false;   ///< Of XML's own, as xml:space.
  };

  /// `isPlain`: the node is in no namespace. `line` is that of the event.
  void Start(const std::string& name, bool isPlain, const std::vector<Attribute>& attributes,
             long line);
  void AddText(std::string_view text) {
    if (m_text != nullptr) *m_text += text;
  }
  void End();

  PolicyDocument Take() { return std::move(m_document); }

 private:
  enum class Place;
  struct Form;
  struct Open {
    Place place;
    std::string name;
  };

  const Form* FormOf(const std::string& name, Place parent);
  void Enter(Place place, const std::string& name, const std::string& id, long line);

  PolicyDocument m_document;
  std::vector<Open> m_open;
  bool m_hasHle = false;
  PolicyElement* m_element = nullptr;  ///< The innermost ones.
  PolicyInfo* m_policy = nullptr;
  std::string* m_text = nullptr;  ///< Takes the text inside an ID, a scope or a property,
  std::size_t m_textDepth = 0;    ///< which is so many nodes deep.
};

}  // namespace app
