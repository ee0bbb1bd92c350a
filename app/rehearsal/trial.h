#pragma once

// What each property of a policy does, seen by giving it other texts and looking at what the
// records then hold. Nothing here knows a property by its name, or what a value means.
//
// All elements are tried in one policy, on a machine without printers. Properties of one name are
// tried once for each text of the property that decides on an element's kind.

#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "app/rehearsal/document.h"
#include "app/rehearsal/registered.h"

namespace app {

/// What becomes of an element: the values of its record, or nothing when it is dropped.
using Fate = std::optional<std::vector<FieldValue>>;

/// What a property does.
struct Effect {
  bool isRead = false;
  bool decides = false;  ///< Whether there is a watermark at all, or more than a few of its fields.
  std::vector<std::size_t> fields;  ///< Which fields of the record follow it.
  bool isText = false;              ///< The one field holds the text, between two others.
  std::string before, behind;
  bool isNumber = false;  ///< The one field holds the number itself.
  /// For a number that stands for something: the fates that 0, 1, 2, ... lead to, and where it
  /// decides, the one that the element's own text leads to.
  std::vector<Fate> fates;
  Fate own;

  /// The part of an element's fate that this property is behind, to be compared with `fates`.
  Fate Part(const Fate& fate) const;
  /// What of the text stands in the record.
  std::string TextIn(const std::vector<FieldValue>& values) const;
  /// The numbers that stand for something: those from 0 or 1 on that each lead to another fate; of
  /// a property that decides, those that lead to a watermark.
  std::vector<int> Meanings() const;
  /// The number among them that leads to this fate.
  std::optional<int> MeaningOf(const Fate& fate) const;
};

class Trial {
 public:
  /// Tries the properties that the elements have, and of `names` those that they lack.
  Trial(const std::vector<const PolicyElementNodes*>& elements, const std::set<std::string>& names);

  /// Null for a property that could not be tried, as its element is dropped either way or there
  /// are too many.
  const Effect* Find(const PolicyElementNodes& element, const Property& property) const;
  /// The effect that a property of this name would have in an element that lacks it.
  const Effect* FindLacking(const PolicyElementNodes& element, const std::string& name) const;

  /// What becomes of the element under an ID that nothing can be wrong with.
  const Fate& FateOf(const PolicyElementNodes& element) const;
  /// What becomes of an element without any property.
  const Fate& FateOfNothing() const { return m_fateOfNothing; }

  /// The names that are read in one element or another.
  const std::set<std::string>& ReadNames() const { return m_readNames; }
  /// False when the policy is too large to try all of it.
  bool IsWhole() const { return m_isWhole; }

 private:
  using Key = std::tuple<std::string, std::string, std::size_t, std::size_t>;
  struct Subject {
    const PolicyElementNodes* element;
    Property property;
  };

  static Key KeyOf(const PolicyElementNodes& element, const Property& property);
  void AddSubject(const PolicyElementNodes& element, const Property& property);
  void TryTwoNumbers(const std::vector<const PolicyElementNodes*>& elements);
  void TryMoreNumbers();

  std::map<Key, Subject> m_subjects;
  std::map<Key, Effect> m_effects;
  std::map<std::string, Fate> m_fates;  ///< By an element's ID.
  Fate m_fateOfNothing;
  std::set<std::string> m_readNames;
  std::size_t m_cost = 0;
  bool m_isWhole = true;
  ScratchMachine m_machine;
};

/// The field's value as a number; nothing for a text.
std::optional<double> NumberIn(const FieldValue& value);

}  // namespace app
