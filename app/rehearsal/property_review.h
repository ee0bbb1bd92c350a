#pragma once

// What became of each property of an element that is registered.

#include "app/rehearsal/finding.h"
#include "app/rehearsal/trial.h"

namespace app {

class PropertyReview {
 public:
  /// What is found goes to `remarks`. Both stay the caller's.
  PropertyReview(const Trial& trial, Remarks& remarks) : m_trial(trial), m_remarks(remarks) {}

  /// `values` are those of the element's record.
  void Run(const PolicyElementNodes& element, const std::vector<FieldValue>& values);

 private:
  void ReviewUnread(const Property& property);
  void ReviewText(const Property& property, const Effect& effect);
  void ReviewNumber(const Property& property, const Effect& effect);
  void ReviewLacking();

  bool IsStored(double number, const Effect& effect) const;
  std::string Became(const Effect& effect) const;
  Finding Tell(const char* kind, const Property& property, const std::string& message) const;

  const Trial& m_trial;
  Remarks& m_remarks;
  const PolicyElementNodes* m_element = nullptr;
  const std::vector<FieldValue>* m_values = nullptr;
};

}  // namespace app
