#pragma once

// A policy's text by its parts, as the system's parser reads it (libxml2 on Linux): what is
// written, and on which line.
//
// Nothing here knows what a part becomes. Texts are UTF-8; lines count from 1. Time and memory grow
// in step with the text.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace app {

/// A property of an element, a scope of a policy, or an ID of its list, which is the `text`.
struct Property {
  std::string name;
  std::string text;  ///< As it is written; of a list's entry without the white space at its ends.
  long line = 0;
};

/// All nodes `Element` of one ID, or `PolicyInfo` of one number. There should be one.
struct PolicyPart {
  std::string id;
  std::vector<long> lines = {};           ///< Of the nodes.
  std::vector<Property> properties = {};  ///< Of all nodes, in order; of a policy its scopes.
  std::vector<Property> listed = {};      ///< Of a policy: the IDs of its list of elements.
};

/// The reader cannot ask for an ID with a quotation mark.
inline bool HasQuote(const std::string& id) {
  return id.find('"') != id.npos;
}

/// Parts of one kind, in the document's order.
class PolicyParts {
 public:
  const std::vector<PolicyPart>& All() const { return m_parts; }
  /// Null for an ID that no part has.
  const PolicyPart* Find(const std::string& id) const;
  /// Returns the part of the ID, which is made where there is none.
  PolicyPart& Of(const std::string& id);

 private:
  std::vector<PolicyPart> m_parts;
  std::map<std::string, std::size_t> m_places;  ///< By ID.
};

/// A node or an attribute of a name that a policy does not have in that place.
struct Stranger {
  std::string name;  ///< An attribute's begins with "@".
  std::string parent;
  long line = 0;
};

struct PolicyDocument {
  PolicyParts elements;
  PolicyParts policies;
  std::vector<Stranger> strangers;
};

/// Reads a text that the XML service of the machine takes, so that nothing in it is a trap for the
/// parser. Throws std::runtime_error for a text that is no document, and std::bad_alloc.
PolicyDocument ReadDocument(const std::string& text);

/// The events of a parser.
class DocumentEvents {
 public:
  struct Attribute {
    std::string name;  ///< Without its prefix.
    std::string value;
    bool isPlain = true;  ///< In no namespace.
  };

  virtual ~DocumentEvents() = default;

  /// `isPlain`: the node is in no namespace. `attributes` are without XML's own, as xml:space.
  /// `line` is that of the event.
  virtual void Start(const std::string& name, bool isPlain,
                     const std::vector<Attribute>& attributes, long line) = 0;
  virtual void AddText(std::string_view text) = 0;
  virtual void End() = 0;
};

/// The home's part of ReadDocument.
void ParseDocument(const std::string& text, DocumentEvents& events);

}  // namespace app
