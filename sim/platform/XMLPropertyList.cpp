#include "sim/platform/XMLPropertyList.h"

#include <expat.h>

#include <array>
#include <climits>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "sim/platform/PropertyListScalars.h"

namespace halvo::sim {
namespace {

enum class Element { plist, dictionary, array, key, string, integer, real, boolean, date, data };

using Name = std::pair<std::string_view, Element>;

constexpr std::array<Name, 11> kElements = {
    Name{"plist", Element::plist}, Name{"dict", Element::dictionary}, Name{"array", Element::array},
    Name{"key", Element::key},     Name{"string", Element::string},   Name{"integer", Element::integer},
    Name{"real", Element::real},   Name{"true", Element::boolean},    Name{"false", Element::boolean},
    Name{"date", Element::date},   Name{"data", Element::data}};

std::optional<Element> elementNamed(std::string_view name) {
  for (const auto& [known, element] : kElements) {
    if (known == name) return element;
  }
  return std::nullopt;
}

bool isContainer(Element element) { return element == Element::dictionary || element == Element::array; }

bool isLeaf(Element element) { return element != Element::plist && !isContainer(element); }

bool isText(Element element) { return element == Element::key || element == Element::string; }

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

// An element whose end is still to come, and how many elements it holds so far.
struct Open {
  Element element;
  std::size_t children = 0;
};

// Follows the elements of a property list, refuses what is none, and keeps the entries of the outermost dictionary.
// Each part of the document answers whether the list is still sound.
class ListContents {
 public:
  // Nothing when the outermost value is no dictionary.
  std::optional<PropertyList> take() { return isDictionary_ ? std::optional(std::move(entries_)) : std::nullopt; }

  bool start(std::string_view name) {
    const auto element = elementNamed(name);
    if (!element || !mayStandHere(*element)) return false;
    if (isContainer(*element) && ++containers_ > kMostPropertyListContainers) return false;
    if (!open_.empty()) ++open_.back().children;
    if (isTopValue(*element)) isDictionary_ = *element == Element::dictionary;
    open_.push_back({*element});
    text_.clear();
    return true;
  }

  // `inOneTag`: <data/>, not <data></data>.
  bool end(bool inOneTag) {
    const Open closed = open_.back();
    open_.pop_back();
    if (!isComplete(closed, inOneTag)) return false;
    if (isInTopDictionary()) keep(closed.element);
    return true;
  }

  bool characters(std::string_view text) {
    if (!isLeaf(open_.back().element)) return isBlank(text);
    text_ += text;
    return true;
  }

  // A comment or a processing instruction, which may not interrupt a text.
  [[nodiscard]] bool aside() const { return open_.empty() || !isLeaf(open_.back().element); }

 private:
  [[nodiscard]] bool mayStandHere(Element element) const {
    if (open_.empty()) return true;
    const Open& parent = open_.back();
    if (isLeaf(parent.element) || element == Element::plist) return false;
    if (parent.element == Element::plist) return parent.children == 0;
    const bool isKeysTurn = parent.element == Element::dictionary && parent.children % 2 == 0;
    return !isKeysTurn || element == Element::key;
  }

  [[nodiscard]] bool isTopValue(Element element) const {
    return element != Element::plist && (open_.empty() || open_.back().element == Element::plist);
  }

  [[nodiscard]] bool isInTopDictionary() const {
    if (open_.empty() || open_.back().element != Element::dictionary) return false;
    return open_.size() == 1 || (open_.size() == 2 && open_.front().element == Element::plist);
  }

  [[nodiscard]] bool isComplete(const Open& closed, bool inOneTag) const {
    switch (closed.element) {
      case Element::dictionary:
        return closed.children % 2 == 0;
      case Element::integer:
        return isPropertyListInteger(text_);
      case Element::real:
        return isPropertyListReal(text_);
      case Element::boolean:
        return text_.empty();
      case Element::date:
        return isPropertyListDate(text_);
      case Element::data:
        return !inOneTag;
      case Element::plist:
      case Element::array:
      case Element::key:
      case Element::string:
        return true;
    }
    return false;
  }

  // A child of the outermost dictionary that has just ended: keys and values take turns. A key in a value's place is a
  // text, as it is on a Mac.
  void keep(Element child) {
    if (open_.back().children % 2 == 1) {
      key_ = std::move(text_);
    } else if (isText(child)) {
      entries_.insert_or_assign(key_, std::move(text_));
    } else {
      entries_.insert_or_assign(key_, PropertyListOther{});
    }
  }

  std::vector<Open> open_;
  std::string text_;
  std::string key_;
  PropertyList entries_;
  std::size_t containers_ = 0;
  bool isDictionary_ = false;
};

struct ParserReleaser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using OwnedParser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserReleaser>;

bool isMarkedUTF16(std::string_view xml) { return xml.starts_with("\xFE\xFF") || xml.starts_with("\xFF\xFE"); }

// A byte order mark outweighs what the document declares. Without one, expat looks at the declaration.
const char* encodingByMark(std::string_view xml) {
  if (isMarkedUTF16(xml)) return "UTF-16";
  return xml.starts_with("\xEF\xBB\xBF") ? "UTF-8" : nullptr;
}

// Leads what expat finds to the contents, until those refuse it.
class Reading {
 public:
  explicit Reading(std::string_view xml) : xml_(xml), parser_(XML_ParserCreate(encodingByMark(xml))) {
    if (!parser_) throw std::bad_alloc();
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(
        parser_.get(),
        [](void* self, const char* name, const char**) {
          of(self).pass([name](ListContents& list) { return list.start(name); });
        },
        [](void* self, const char*) {
          const bool inOneTag = XML_GetCurrentByteCount(of(self).parser_.get()) == 0;
          of(self).pass([inOneTag](ListContents& list) { return list.end(inOneTag); });
        });
    XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int size) {
      of(self).pass([&](ListContents& list) { return list.characters({text, static_cast<std::size_t>(size)}); });
    });
    XML_SetCommentHandler(parser_.get(), [](void* self, const char*) { of(self).pass(&ListContents::aside); });
    XML_SetProcessingInstructionHandler(
        parser_.get(), [](void* self, const char*, const char*) { of(self).pass(&ListContents::aside); });
    refuseEntities();
  }

  std::optional<PropertyList> finish() {
    const auto status = XML_Parse(parser_.get(), xml_.data(), static_cast<int>(xml_.size()), XML_TRUE);
    return status == XML_STATUS_OK && !refused_ ? contents_.take() : std::nullopt;
  }

 private:
  static Reading& of(void* self) { return *static_cast<Reading*>(self); }

  // Only the five that XML itself knows are texts. Those of the document's own could grow without end, and those of a
  // DTD that is never fetched would be left out in silence.
  void refuseEntities() {
    XML_SetEntityDeclHandler(parser_.get(), [](void* self, const char*, int, const char*, int, const char*, const char*,
                                               const char*, const char*) { of(self).refuse(); });
    XML_SetSkippedEntityHandler(parser_.get(), [](void* self, const char*, int) { of(self).refuse(); });
  }

  // No exception may pass through expat. It still reports a few parts after it was stopped.
  template <typename Step>
  void pass(Step step) {
    if (refused_) return;
    try {
      if (!std::invoke(step, contents_)) refuse();
    } catch (const std::bad_alloc&) {
      refuse();
    }
  }

  void refuse() {
    refused_ = true;
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  std::string_view xml_;
  OwnedParser parser_;
  ListContents contents_;
  bool refused_ = false;
};

}  // namespace

std::optional<PropertyList> readXMLPropertyList(std::string_view xml) {
  if (xml.size() > INT_MAX) return std::nullopt;
  // Expat would take NULs for UTF-16 without a byte order mark, which is no text on a Mac.
  if (!isMarkedUTF16(xml) && xml.find('\0') != std::string_view::npos) return std::nullopt;
  return Reading(xml).finish();
}

}  // namespace halvo::sim
