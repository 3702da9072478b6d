// Lists of nodes as lists of names, and a record of who was called back.
#pragma once
#include "TestMap.h"

using Names = std::vector<std::string>;

inline Names namesOf(const NodeList_t& nodes) {
  Names names;
  for (INode* each : nodes) names.emplace_back(each->GetName().c_str());
  return names;
}

inline Names namesOf(const FeatureList_t& features) {
  Names names;
  for (IValue* each : features) names.emplace_back(each->GetNode()->GetName().c_str());
  return names;
}

inline Names namesOf(const gcstring_vector& texts) {
  Names names;
  for (size_t i = 0; i < texts.size(); ++i) names.emplace_back(texts[i].c_str());
  return names;
}

// Writes down the names of nodes in the order in which they call back, inside the lock.
class CallLog {
 public:
  void watch(INode* node) { Register(node, *this, &CallLog::called); }
  void watch(const TestMap& map, const Names& names) {
    for (const std::string& each : names) watch(map.node(each));
  }
  // What was called since the last look.
  Names take() { return std::exchange(calls_, {}); }

 private:
  void called(INode* node) { calls_.emplace_back(node->GetName().c_str()); }
  Names calls_;
};
