#include "sim/platform/PropertyLists.h"

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

namespace halvo::sim {
namespace {

using Node = XMLPropertyListNode;
using Kind = Node::Kind;
using Name = std::pair<std::string_view, Kind>;

constexpr std::array<Name, 11> kElements = {
    Name{"plist", Kind::plist},   Name{"dict", Kind::dictionary}, Name{"array", Kind::array}, Name{"key", Kind::key},
    Name{"string", Kind::string}, Name{"integer", Kind::integer}, Name{"real", Kind::real},   Name{"true", Kind::yes},
    Name{"false", Kind::no},      Name{"date", Kind::date},       Name{"data", Kind::data}};

std::optional<Kind> kindNamed(std::string_view name) {
  for (const auto& [known, kind] : kElements) {
    if (known == name) return kind;
  }
  return std::nullopt;
}

bool isContainer(Kind kind) { return kind == Kind::dictionary || kind == Kind::array; }

bool isLeaf(Kind kind) { return kind != Kind::plist && !isContainer(kind); }

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

// Follows the elements of a property list and refuses what is none. Each part of the document answers whether the list
// is still sound.
class ListContents {
 public:
  // The outermost value; nothing when there is none.
  std::optional<Node> take() {
    if (!whole_ || whole_->kind != Kind::plist) return std::move(whole_);
    return whole_->children.empty() ? std::nullopt : std::optional(std::move(whole_->children.front()));
  }

  bool start(std::string_view name) {
    const auto kind = kindNamed(name);
    if (!kind || !mayStandHere(*kind)) return false;
    if (isContainer(*kind) && ++containers_ > kMostPropertyListContainers) return false;
    open_.push_back({.kind = *kind, .text = {}, .children = {}});
    return true;
  }

  // `inOneTag`: <data/>, not <data></data>.
  bool end(bool inOneTag) {
    Node closed = std::move(open_.back());
    open_.pop_back();
    if (!isComplete(closed, inOneTag)) return false;
    if (open_.empty()) {
      whole_ = std::move(closed);
    } else {
      open_.back().children.push_back(std::move(closed));
    }
    return true;
  }

  bool characters(std::string_view text) {
    if (!isLeaf(open_.back().kind)) return isBlank(text);
    open_.back().text += text;
    return true;
  }

  // A comment or a processing instruction, which may not interrupt a text.
  [[nodiscard]] bool aside() const { return open_.empty() || !isLeaf(open_.back().kind); }

 private:
  [[nodiscard]] bool mayStandHere(Kind kind) const {
    if (open_.empty()) return true;
    const Node& parent = open_.back();
    if (isLeaf(parent.kind) || kind == Kind::plist) return false;
    if (parent.kind == Kind::plist) return parent.children.empty();
    const bool isKeysTurn = parent.kind == Kind::dictionary && parent.children.size() % 2 == 0;
    return !isKeysTurn || kind == Kind::key;
  }

  [[nodiscard]] static bool isComplete(const Node& closed, bool inOneTag) {
    switch (closed.kind) {
      case Kind::dictionary:
        return closed.children.size() % 2 == 0;
      case Kind::integer:
        return isPropertyListInteger(closed.text);
      case Kind::real:
        return isPropertyListReal(closed.text);
      case Kind::yes:
      case Kind::no:
        return closed.text.empty();
      case Kind::date:
        return isPropertyListDate(closed.text);
      case Kind::data:
        return !inOneTag;
      case Kind::plist:
      case Kind::array:
      case Kind::key:
      case Kind::string:
        return true;
    }
    return false;
  }

  std::vector<Node> open_;  // the elements whose ends are still to come
  std::optional<Node> whole_;
  std::size_t containers_ = 0;
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
    refuseDocumentTypes();
    refuseEntities();
  }

  std::optional<Node> finish() {
    const auto status = XML_Parse(parser_.get(), xml_.data(), static_cast<int>(xml_.size()), XML_TRUE);
    return status == XML_STATUS_OK && !refused_ ? contents_.take() : std::nullopt;
  }

 private:
  static Reading& of(void* self) { return *static_cast<Reading*>(self); }

  // A Mac's reader takes a document type to end at the first '>', also in quotes, and one with declarations of its own
  // is refused before it gets there.
  void refuseDocumentTypes() {
    XML_SetStartDoctypeDeclHandler(parser_.get(),
                                   [](void* self, const char*, const char* where, const char*, int hasDeclarations) {
                                     const std::string_view quoted = where == nullptr ? "" : where;
                                     if (hasDeclarations != 0 || quoted.find_first_of(">[") != std::string_view::npos)
                                       of(self).refuse();
                                   });
  }

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

std::optional<XMLPropertyListNode> readXMLPropertyList(std::string_view xml) {
  if (xml.size() > INT_MAX) return std::nullopt;
  // Expat would take NULs for UTF-16 without a byte order mark, which is no text on a Mac.
  if (!isMarkedUTF16(xml) && xml.find('\0') != std::string_view::npos) return std::nullopt;
  return Reading(xml).finish();
}

}  // namespace halvo::sim
