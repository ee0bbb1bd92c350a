#pragma once

// What a policy's text says and where, as libxml2 reads it. Nothing here knows what becomes of it.
//
// The document also makes others of its parts, for rehearsals that change one thing at a time.
// Texts are UTF-8; a line counts from 1.

#include <libxml/tree.h>

#include <map>
#include <string>
#include <vector>

#include "platform/owner.h"

namespace app {

/// One property of an element.
struct Property {
  std::string name;
  std::string text;  ///< As it is written, with the white space at its ends.
  long line = 0;
  std::size_t node = 0;  ///< Which of the nodes of one ID it stands in.
  std::size_t rank = 0;  ///< How many of its name stand before it in those nodes.
};

/// All nodes `Element` of one ID. There should be one.
struct PolicyElementNodes {
  std::string id;
  std::vector<xmlNode*> nodes;
  std::vector<Property> properties;           ///< Of all nodes, in the document's order.
  std::map<std::string, std::size_t> counts;  ///< How many properties have a name.

  long Line() const;
  /// The text of the first property of this name, without white space at its ends.
  std::string TextOf(const std::string& name) const;
};

/// An entry of a policy's list of elements.
struct ListedElement {
  std::string id;
  long line = 0;
};

/// All nodes `PolicyInfo` of one number. There should be one.
struct PolicyNodes {
  std::string id;
  std::vector<long> lines;
  std::vector<ListedElement> listed;
  std::vector<Property> scopes;
};

/// A node at a place where the document's form has none of its name.
struct Stranger {
  std::string name;  ///< An attribute's begins with "@".
  std::string parent;
  long line = 0;
};

class PolicyDocument {
 public:
  /// std::runtime_error for a text that is no document.
  explicit PolicyDocument(const std::string& text);

  const std::vector<PolicyElementNodes>& Elements() const { return m_elements; }
  const std::vector<PolicyNodes>& Policies() const { return m_policies; }
  const std::vector<Stranger>& Strangers() const { return m_strangers; }

  /// Null for an ID that no element has, and for a number that no policy has.
  const PolicyElementNodes* Find(const std::string& id) const;
  const PolicyNodes* FindPolicy(int id) const;

  std::string TextWithoutStrangers() const;

 private:
  struct Form;

  static const Form& WholeForm();
  void Walk(xmlNode* node, const Form& form);
  void RemoveStranger(xmlNode* node);
  void AddElement(xmlNode* node);
  void AddPolicy(xmlNode* node);

  Owner<xmlDoc*, &xmlFreeDoc> m_document;
  std::vector<PolicyElementNodes> m_elements;
  std::map<std::string, std::size_t> m_places;  ///< Of each ID in m_elements.
  std::vector<PolicyNodes> m_policies;
  std::vector<Stranger> m_strangers;
};

/// Makes a policy of copies of elements. Each copy has an ID of its own: "1", "2", ...
class TrialPolicy {
 public:
  TrialPolicy();

  /// Adds a copy of all nodes of the element and gives its ID.
  std::string Add(const PolicyElementNodes& element);
  /// The same with another text for the property, which is added when the element has none such.
  std::string Add(const PolicyElementNodes& element, const Property& property,
                  const std::string& text);

  /// Adds an element without any property.
  std::string AddEmpty();

  std::string Text() const;
  static constexpr int kPolicyId = 1;

 private:
  std::string List();
  std::vector<xmlNode*> Copy(const PolicyElementNodes& element, const std::string& id);

  Owner<xmlDoc*, &xmlFreeDoc> m_document;
  xmlNode* m_list = nullptr;
  xmlNode* m_elements = nullptr;
  std::size_t m_count = 0;
};

}  // namespace app
