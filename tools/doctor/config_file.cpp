#include "doctor/config_file.h"

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "doctor/config_text.h"
#include "doctor/machine.h"

namespace launcher::doctor {
namespace {

using Json = nlohmann::json;

struct Setting {
  const char* section;
  const char* key;
};

// In the order in which the library reads them.
constexpr Setting kSettings[] = {
#define SETTING(section, key, field, defaultText) {#section, #key},
#include "settings.inc"
};
constexpr const char* kSections[] = {
#define SECTION(name) #name,
#include "settings.inc"
};

constexpr const char* kRepairNext = "\"doctor config repair\" does it and keeps the old file";

std::string NameOf(const Setting& setting) {
  return std::string(setting.section) + '.' + setting.key;
}

std::string TypeInWords(const Node& node) {
  constexpr std::size_t kShown = 60;
  switch (node.type) {
    case NodeType::null:
      return "null";
    case NodeType::boolean:
      return "the truth value " + node.text;
    case NodeType::number:
      return "the number " + node.text.substr(0, kShown);
    case NodeType::string:
      return "the text " + Quoted(node.text.substr(0, kShown));
    case NodeType::array:
      return "a list";
    case NodeType::object:
      break;
  }
  return "an object";
}

// Of members with equal names the last counts.
const Member* LastMember(const Node& object, const std::string& key) {
  const Member* last = nullptr;
  for (const Member& member : object.members) {
    if (member.key == key) last = &member;
  }
  return last;
}

std::size_t CountOf(const Node& object, const std::string& key) {
  return static_cast<std::size_t>(
      std::count_if(object.members.begin(), object.members.end(),
                    [&](const Member& member) { return member.key == key; }));
}

// Where a file is looked at: its text, its name and the report.
class Checker {
 public:
  Checker(const ConfigText& settings, std::string name, Report& report)
      : settings_(settings), name_(std::move(name)), report_(report) {}

  void TellFaults() {
    std::vector<const FaultKind*> told;
    for (const Fault& fault : settings_.faults) {
      if (std::find(told.begin(), told.end(), fault.kind) != told.end()) continue;
      told.push_back(fault.kind);
      const auto count = static_cast<std::size_t>(
          std::count_if(settings_.faults.begin(), settings_.faults.end(),
                        [&](const Fault& other) { return other.kind == fault.kind; }));
      std::string text = fault.kind->what;
      if (!fault.detail.empty()) text += ": " + fault.detail;
      if (count > 1) text += " (and " + Counted(count - 1, "more place") + ")";
      Tell("settings-syntax", Status::broken, fault.offset, text, fault.kind->cause,
           std::string(fault.kind->next) + "; " + kRepairNext, {});
    }
  }

  void TellFields() {
    const Node& document = settings_.document;
    const bool hasMembers = document.type == NodeType::object || document.type == NodeType::null;
    if (!hasMembers) {
      Tell("settings-document", Status::broken, document.offset,
           "the file holds " + TypeInWords(document) + " and no object",
           "another file was saved under this name, or the braces around all are gone", kRepairNext,
           {});
    }
    for (const char* const section : kSections) {
      if (hasMembers) TellSection(section);
    }
  }

  // What loads and is odd all the same.
  void TellOddities() {
    const Node& document = settings_.document;
    for (const char* const name : kSections) {
      const Member* const section = LastMember(document, name);
      if (section == nullptr) continue;
      if (CountOf(document, name) > 1) {
        Tell("settings-twice", Status::warning, section->offset,
             std::string("the section ") + name + " is there more than once; this one counts",
             "a part of the file was pasted twice", "remove the others", {});
      }
      for (const Setting& setting : kSettings) {
        if (std::string(name) == setting.section && CountOf(section->value, setting.key) > 1) {
          Tell("settings-twice", Status::warning, LastMember(section->value, setting.key)->offset,
               NameOf(setting) + " is there more than once; this one counts",
               "a line was copied and the old one not removed", "remove the others",
               NameOf(setting));
        }
      }
    }
    if (settings_.hasMoreBehind) {
      Tell("settings-rest", Status::warning, settings_.end,
           "the settings end here; what follows is not read",
           "a brace too many, or a part of an older file stayed", "remove what follows", {});
    }
  }

 private:
  void TellSection(const char* name) {
    const Node& document = settings_.document;
    const Member* const section = LastMember(document, name);
    if (section == nullptr) {
      Tell("settings-section", Status::broken, document.offset,
           std::string("the section ") + name + " is missing" + Elsewhere(name),
           "removed, or its name was changed: small and capital letters differ", kRepairNext, name);
      return;
    }
    const Node& value = section->value;
    if (value.type != NodeType::object) {
      Tell("settings-section", Status::broken, value.offset,
           std::string("the section ") + name + " is " + TypeInWords(value) + " and no object",
           "a slip of the pen", kRepairNext, name);
      return;
    }
    for (const Setting& setting : kSettings) {
      if (std::string(name) != setting.section) continue;
      const Member* const member = LastMember(value, setting.key);
      if (member == nullptr) {
        Tell("settings-field", Status::broken, value.offset,
             NameOf(setting) + " is missing from the section that begins here" +
                 Elsewhere(setting.key),
             "removed, or its name was changed: small and capital letters differ", kRepairNext,
             NameOf(setting));
      } else if (member->value.type != NodeType::string) {
        Tell("settings-field", Status::broken, member->value.offset,
             NameOf(setting) + " is " + TypeInWords(member->value) +
                 "; every setting is a text in double quotes",
             "written without quotes: also true, false and numbers need them", kRepairNext,
             NameOf(setting));
      }
    }
  }

  // Where something of that name, or nearly, stands instead.
  std::string Elsewhere(const std::string& name) const;

  void Tell(const char* id, Status status, std::size_t offset, const std::string& text,
            const std::string& cause, const std::string& next, const std::string& field) {
    const Place place = PlaceOf(settings_.text, offset);
    Finding finding;
    finding.id = id;
    finding.status = status;
    finding.text = name_ + ", line " + std::to_string(place.line) + ", column " +
                   std::to_string(place.column) + ": " + text;
    finding.cause = cause;
    finding.next = next;
    finding.field = field;
    finding.line = place.line;
    finding.column = place.column;
    report_.Add(std::move(finding));
  }

  const ConfigText& settings_;
  std::string name_;
  Report& report_;
};

// Letters and digits alone, all small: names that differ in nothing else are meant to be the same.
std::string Simplified(const std::string& name) {
  std::string simple;
  for (const char c : name) {
    if (c >= 'A' && c <= 'Z') simple += static_cast<char>(c - 'A' + 'a');
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) simple += c;
  }
  return simple;
}

// Calls `visit` for each member below a node, from the first to the last.
void VisitMembers(const Node& node, const std::function<void(const Member&)>& visit) {
  for (const Member& member : node.members) {
    visit(member);
    VisitMembers(member.value, visit);
  }
  for (const Node& item : node.items) VisitMembers(item, visit);
}

std::string Checker::Elsewhere(const std::string& name) const {
  const Member* found = nullptr;
  const auto look = [&](const Member& member) {
    if (Simplified(member.key) == Simplified(name)) found = &member;
  };
  VisitMembers(settings_.document, look);
  for (const Member& member : settings_.behind) look(member);
  if (found == nullptr) return {};
  return "; " + Quoted(found->key) + " stands on line " +
         std::to_string(PlaceOf(settings_.text, found->offset).line);
}

// The text that a value is or was meant to be.
std::optional<std::string> TextOf(const Node& node) {
  if (node.isCut) return std::nullopt;
  if (node.type == NodeType::array && node.items.size() == 1) return TextOf(node.items.front());
  if (node.type == NodeType::string || node.type == NodeType::number ||
      node.type == NodeType::boolean) {
    return node.text;
  }
  return std::nullopt;
}

// Makes the new file. The order of what is there stays.
class Repairer {
 public:
  Repairer(ConfigText settings, const Node& defaults)
      : settings_(std::move(settings)), defaults_(defaults) {}

  Repair Run() {
    NoteFaults();
    Node root = MergedRoot();
    for (const char* const name : kSections) MendSection(root, name);
    return {RenderNode(root), std::move(changes_)};
  }

 private:
  void Change(const std::string& what) { changes_.push_back(what); }

  std::string Line(std::size_t offset) const {
    return "line " + std::to_string(PlaceOf(settings_.text, offset).line);
  }

  // A line for each kind of fault that is gone from the new text.
  void NoteFaults() {
    std::map<const FaultKind*, std::vector<std::size_t>> lines;
    std::vector<const FaultKind*> order;
    for (const Fault& fault : settings_.faults) {
      std::vector<std::size_t>& found = lines[fault.kind];
      if (found.empty()) order.push_back(fault.kind);
      const std::size_t line = PlaceOf(settings_.text, fault.offset).line;
      if (found.empty() || found.back() != line) found.push_back(line);
    }
    constexpr std::size_t kShown = 8;
    for (const FaultKind* const kind : order) {
      const std::vector<std::size_t>& found = lines[kind];
      std::string text = found.size() == 1 ? "line " : "lines ";
      for (std::size_t i = 0; i < std::min(found.size(), kShown); ++i) {
        text += (i == 0 ? "" : ", ") + std::to_string(found[i]);
      }
      if (found.size() > kShown) text += " and more";
      Change(text + ": put right: " + kind->what);
    }
  }

  // The document as an object, with what stands behind it and each section once.
  Node MergedRoot() {
    Node root;
    root.type = NodeType::object;
    if (settings_.document.type == NodeType::object) {
      root.members = settings_.document.members;
    } else if (settings_.document.type != NodeType::null) {
      Change(Line(settings_.document.offset) + ": " + TypeInWords(settings_.document) +
             " where the settings belong was left out");
    }
    for (const Member& member : settings_.behind) {
      Change(Line(member.offset) + ": " + Quoted(member.key) +
             " stood behind the end of the settings and was taken in");
      root.members.push_back(member);
    }
    TakeSectionsOut(root);
    for (const char* const name : kSections) MergeSections(root, name);
    return root;
  }

  // Where a section's closing brace is missing the other one is inside it.
  void TakeSectionsOut(Node& root) {
    for (std::size_t i = 0; i < root.members.size(); ++i) {
      if (!IsSection(root.members[i].key)) continue;
      std::vector<Member>& inside = root.members[i].value.members;
      const auto found = std::find_if(inside.begin(), inside.end(), [&](const Member& member) {
        return IsSection(member.key) && CountOf(root, member.key) == 0 &&
               member.value.type == NodeType::object;
      });
      if (found == inside.end()) continue;
      Member section = std::move(*found);
      inside.erase(found);
      Change(Line(section.offset) + ": the section " + section.key + " was inside the section " +
             root.members[i].key + " and was taken out");
      root.members.insert(root.members.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                          std::move(section));
    }
  }

  static bool IsSection(const std::string& key) {
    return std::any_of(std::begin(kSections), std::end(kSections),
                       [&](const char* name) { return key == name; });
  }

  // One object in the last one's place, with the members of all.
  void MergeSections(Node& root, const std::string& name) {
    Node merged;
    merged.type = NodeType::object;
    std::vector<Member> others;
    std::size_t place = std::string::npos;
    std::size_t count = 0;
    for (Member& member : root.members) {
      if (member.key != name) {
        others.push_back(std::move(member));
        continue;
      }
      ++count;
      place = others.size();
      if (member.value.type == NodeType::object) {
        for (Member& inner : member.value.members) merged.members.push_back(std::move(inner));
      } else {
        Change(Line(member.offset) + ": the section " + name + " was " + TypeInWords(member.value) +
               " and is an object now");
      }
    }
    if (count == 0) Change("the section " + name + " was missing and was put in");
    if (count > 1) Change("the section " + name + " was there more than once and is one now");
    Member section;
    section.key = name;
    section.value = std::move(merged);
    others.insert(others.begin() + static_cast<std::ptrdiff_t>(std::min(place, others.size())),
                  std::move(section));
    root.members = std::move(others);
  }

  void MendSection(Node& root, const std::string& name) {
    for (Member& member : root.members) {
      if (member.key != name) continue;
      for (const Setting& setting : kSettings) {
        if (name == setting.section) MendSetting(member.value, setting);
      }
    }
  }

  void MendSetting(Node& section, const Setting& setting) {
    const std::string name = NameOf(setting);
    const Member* const last = LastMember(section, setting.key);
    const std::size_t count = CountOf(section, setting.key);
    std::string text;
    if (last != nullptr && last->value.type == NodeType::string && !last->value.isCut) {
      if (count == 1) return;
      text = last->value.text;
      Change(name + " was there more than once; the last one counts: " + Quoted(text));
    } else if (const Member* const usable = LastUsable(section, setting.key)) {
      text = *TextOf(usable->value);
      Change(Line(usable->offset) + ": " + name + " was " + TypeInWords(usable->value) +
             " and is the text " + Quoted(text) + " now");
    } else if (const Member* const other = UsableElsewhere(setting.key)) {
      text = *TextOf(other->value);
      Change(name + " is " + Quoted(text) + " now, as " + Quoted(other->key) + " on " +
             Line(other->offset));
    } else {
      text = DefaultOf(setting);
      Change(name +
             (last == nullptr     ? std::string(" was missing")
              : last->value.isCut ? std::string(" was cut off")
                                  : " was " + TypeInWords(last->value)) +
             " and has the default now: " + Quoted(text));
    }
    SetMember(section, setting.key, text);
  }

  static const Member* LastUsable(const Node& section, const std::string& key) {
    const Member* last = nullptr;
    for (const Member& member : section.members) {
      if (member.key == key && TextOf(member.value)) last = &member;
    }
    return last;
  }

  // The same name in another place, else nearly the same name.
  const Member* UsableElsewhere(const std::string& key) const {
    const Member* same = nullptr;
    const Member* similar = nullptr;
    const auto look = [&](const Member& member) {
      if (!TextOf(member.value)) return;
      if (member.key == key) same = &member;
      if (Simplified(member.key) == Simplified(key)) similar = &member;
    };
    VisitMembers(settings_.document, look);
    return same != nullptr ? same : similar;
  }

  std::string DefaultOf(const Setting& setting) const {
    const Member* const section = LastMember(defaults_, setting.section);
    const Member* const member =
        section != nullptr ? LastMember(section->value, setting.key) : nullptr;
    if (member == nullptr || member->value.type != NodeType::string) {
      throw std::runtime_error("the library's own defaults lack " + NameOf(setting));
    }
    return member->value.text;
  }

  // In the place of the last one, or at the end.
  static void SetMember(Node& section, const std::string& key, const std::string& text) {
    std::vector<Member>& members = section.members;
    std::size_t left = CountOf(section, key);
    members.erase(
        std::remove_if(members.begin(), members.end(),
                       [&](const Member& member) { return member.key == key && left-- > 1; }),
        members.end());
    auto place = std::find_if(members.begin(), members.end(),
                              [&](const Member& member) { return member.key == key; });
    if (place == members.end()) {
      place = members.insert(members.end(), Member());
      place->key = key;
    }
    place->value = Node();
    place->value.type = NodeType::string;
    place->value.text = text;
  }

  ConfigText settings_;
  const Node& defaults_;
  std::vector<std::string> changes_;
};

std::string AsRead(const std::string& bytes) {
  return kTextEndsAtControlZ ? bytes.substr(0, bytes.find('\x1A')) : bytes;
}

}  // namespace

std::string ErrorOfConfig(const std::string& bytes) {
  try {
    Json document;
    std::istringstream(AsRead(bytes)) >> document;
    for (const Setting& setting : kSettings) {
      static_cast<void>(document[setting.section][setting.key].get<std::string>());
    }
    return {};
  } catch (const Json::exception& error) {
    return error.what();
  }
}

void CheckConfig(const std::string& bytes, const std::string& name,
                 const std::optional<LibraryVerdict>& verdict, Report& report) {
  const ConfigText settings = ReadConfigText(AsRead(bytes));
  const std::string error = ErrorOfConfig(bytes);
  Checker checker(settings, name, report);
  Finding finding;
  finding.id = "settings";
  if (error.empty()) {
    finding.text = name + " loads: all " + Counted(std::size(kSettings), "setting") + " are there";
    report.Add(std::move(finding));
    checker.TellOddities();
  } else {
    finding.status = Status::broken;
    finding.text = name +
                   " does not load: every lookup of a text fails, and what is wrong "
                   "follows";
    finding.jsonError = verdict && !verdict->loads ? verdict->error : error;
    finding.next = kRepairNext;
    report.Add(std::move(finding));
    checker.TellFaults();
    // Of a file with nothing in it there is no more to say.
    if (settings.faults.empty() || settings.document.type != NodeType::null) checker.TellFields();
    checker.TellOddities();
  }
  if (verdict && verdict->loads != error.empty()) {
    finding = {};
    finding.id = "settings-verdict";
    finding.status = Status::broken;
    finding.text = std::string("the library ") + (verdict->loads ? "loads" : "does not load") +
                   " this file, and doctor thinks otherwise";
    finding.jsonError = verdict->error;
    finding.cause = "library and doctor are of different versions";
    finding.next = "take both from one package";
    report.Add(std::move(finding));
  }
}

Repair RepairConfig(const std::string& bytes, const std::string& defaults) {
  const ConfigText known = ReadConfigText(defaults);
  return Repairer(ReadConfigText(AsRead(bytes)), known.document).Run();
}

}  // namespace launcher::doctor
