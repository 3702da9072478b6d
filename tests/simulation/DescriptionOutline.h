// Reads just enough XML to look at the camera's own description: elements, attributes, texts. Not for foreign files.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct OutlineElement {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;
  std::vector<OutlineElement> children;

  const OutlineElement* child(std::string_view wanted) const {
    for (const auto& c : children)
      if (c.name == wanted) return &c;
    return nullptr;
  }
  std::string textOf(std::string_view wanted) const {
    const auto* found = child(wanted);
    return found ? found->text : std::string();
  }
};

class DescriptionOutline {
 public:
  static OutlineElement read(std::string_view xml) { return DescriptionOutline(xml).element(); }

 private:
  explicit DescriptionOutline(std::string_view xml) : xml_(xml) {}

  void expect(bool holds, const char* what) const {
    if (!holds) throw std::runtime_error(std::string(what) + " at byte " + std::to_string(at_));
  }

  void skipRemarks() {
    while (true) {
      at_ = xml_.find('<', at_);
      expect(at_ != std::string_view::npos, "no element");
      if (xml_.substr(at_, 4) == "<!--")
        at_ = xml_.find("-->", at_) + 3;
      else if (xml_.substr(at_, 2) == "<?")
        at_ = xml_.find("?>", at_) + 2;
      else
        return;
    }
  }

  OutlineElement element() {
    skipRemarks();
    const std::size_t close = xml_.find('>', at_);
    std::string_view tag = xml_.substr(at_ + 1, close - at_ - 1);
    at_ = close + 1;
    const bool empty = tag.ends_with('/');
    OutlineElement result;
    result.name = tag.substr(0, tag.find_first_of(" \n/"));
    for (std::size_t quote = tag.find('"'); quote != std::string_view::npos;) {
      const std::size_t end = tag.find('"', quote + 1);
      const std::size_t start = tag.find_last_of(" \n", quote) + 1;
      result.attributes.emplace(tag.substr(start, quote - 1 - start), tag.substr(quote + 1, end - quote - 1));
      quote = tag.find('"', end + 1);
    }
    while (!empty) {
      const std::size_t open = xml_.find('<', at_);
      expect(open != std::string_view::npos, "unclosed element");
      result.text += xml_.substr(at_, open - at_);
      at_ = open;
      if (xml_.substr(open, 2) == "</") {
        at_ = xml_.find('>', open) + 1;
        return result;
      }
      if (xml_.substr(open, 4) == "<!--")
        at_ = xml_.find("-->", open) + 3;
      else
        result.children.push_back(element());
    }
    return result;
  }

  std::string_view xml_;
  std::size_t at_ = 0;
};
