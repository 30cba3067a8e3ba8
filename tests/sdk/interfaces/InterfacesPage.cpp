#include "tests/sdk/interfaces/InterfacesPage.h"

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgError.h>

#include <cstdio>

namespace {

using namespace Corvane::AgentInterfacesV3;

constexpr std::string_view Begin = "<!-- generated from the interface tables: begin -->\n";
constexpr std::string_view End = "<!-- generated from the interface tables: end -->\n";

std::string Code(std::string_view text) {
  return "`" + std::string(text) + "`";
}

/// An example of the JSON form.
std::string_view JsonOf(AMsgType type) {
  switch (type) {
    case AMsgType::Long:
    case AMsgType::ULong:
      return "0";
    case AMsgType::Bool:
      return "true";
    case AMsgType::String:
      return "\"...\"";
    case AMsgType::StringMap:
      return "{\"...\": \"...\"}";
  }
  return {};
}

std::string_view NameOf(AInterfaceTable::ADirection direction) {
  switch (direction) {
    case AInterfaceTable::ADirection::In:
      return "in";
    case AInterfaceTable::ADirection::Out:
      return "out";
    case AInterfaceTable::ADirection::InOut:
      return "in, out";
  }
  return {};
}

/// The JSON object of the arguments that `isShown` picks.
template <class Predicate>
std::string JsonObject(const AInterfaceTable::AOperation& operation, Predicate isShown) {
  std::string members;
  for (const auto& argument : operation.Arguments()) {
    if (isShown(argument)) {
      members += (members.empty() ? "\"" : ", \"") + std::string(argument.m_Name) +
                 "\": " + std::string(JsonOf(argument.m_Type));
    }
  }
  return "{" + members + "}";
}

std::string ArgumentRows(const AInterfaceTable::AOperation& operation) {
  std::string rows;
  for (const auto& argument : operation.Arguments()) {
    rows += "| " + Code(argument.m_Name) + " | " +
            Corvane::AgentInterfacesV3::NameOf(argument.m_Type) + " | " +
            std::string(NameOf(argument.m_Direction)) + (argument.m_Optional ? ", optional" : "") +
            " |\n";
  }
  return "| argument | type | direction |\n|---|---|---|\n" + rows;
}

std::string Section(const AInterfaceTable::AOperation& operation) {
  using AArgument = AInterfaceTable::AArgument;
  const std::string begin =
      "### " + std::string(operation.m_Name) + "\n\n" + std::string(operation.m_Summary);
  if (operation.Arguments().empty()) {
    return begin + " No arguments.\n\n";
  }
  return begin + "\n\n" + ArgumentRows(operation) + "\nRequest " +
         Code(JsonObject(operation, [](const AArgument& a) { return a.IsIn(); })) + ", answer " +
         Code("{\"result\": n, \"out\": " +
              JsonObject(operation, [](const AArgument& a) { return a.IsOut(); }) + "}") +
         ".\n\n";
}

std::string Section(const AInterfaceTable& table) {
  std::string text =
      "## " + std::string(table.m_Name) + "\n\nIdentifier " + Code(table.m_Identifier);
  if (table.m_Parent != nullptr) {
    text += "; derives from " + Code(table.m_Parent->m_Name);
  }
  text += ".\n\n";
  for (const auto& operation : table.m_Operations) {
    text += Section(operation);
  }
  return text;
}

std::string ErrorSection() {
  std::string text = "## Errors of requests\n\n| name | code | meaning |\n|---|---|---|\n";
  for (const AMsgErrorInfo& info : MsgErrors()) {
    char code[16];
    (void)std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(info.m_Code));
    text += "| " + Code(info.m_Name) + " | " + code + " | " + info.m_Meaning + " |\n";
  }
  return text;
}

}  // namespace

std::string InterfacesPage::Generated() {
  std::string text(Begin);
  text += "\n";
  for (const AInterfaceTable* table : AInterfaceTable::All()) {
    text += Section(*table);
  }
  return text + ErrorSection() + "\n" + std::string(End);
}

std::string InterfacesPage::Updated(const std::string& page) {
  const std::size_t begin = page.find(Begin);
  const std::size_t end = page.find(End);
  if (begin == std::string::npos || end == std::string::npos || end < begin) {
    return {};
  }
  return page.substr(0, begin) + Generated() + page.substr(end + End.size());
}
