#include "agent/document/ValueCheck.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AString.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <numeric>
#include <vector>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string Trimmed(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), IsBlank);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), IsBlank).base();
  return first < last ? std::string(first, last) : std::string();
}

bool IsNumber(const std::string& text) {
  const std::size_t digits = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  return text.size() > digits && text.find_first_not_of("0123456789", digits) == std::string::npos;
}

// Digits that do not fit are clamped, so the number written and the number read differ.
bool FitsIn32Bits(const std::string& number) {
  constexpr std::size_t MoreThanEnoughDigits = 12;
  const std::size_t digits = number.find_first_not_of("+-0");
  if (digits == std::string::npos) {
    return true;
  }
  if (number.size() - digits > MoreThanEnoughDigits) {
    return false;
  }
  const std::int64_t value = std::stoll(number);
  return value >= INT32_MIN && value <= INT32_MAX;
}

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return text;
}

// Letters to insert, remove or replace to turn one word into the other (Levenshtein distance).
std::size_t EditDistance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[to.size()];
}

// The known name that `name` was probably meant to be; empty when none is near.
std::string NearestName(const std::string& name, std::initializer_list<const char*> known) {
  constexpr std::size_t FarthestSlip = 2;
  constexpr std::size_t LongestName = 40;
  if (name.size() > LongestName) {
    return {};
  }
  std::string nearest;
  std::size_t best = FarthestSlip + 1;
  for (const char* candidate : known) {
    const std::size_t distance = EditDistance(LowerCase(name), LowerCase(candidate));
    if (distance < best) {
      nearest = candidate;
    }
    best = std::min(best, distance);
  }
  return nearest;
}

}  // namespace

std::optional<SourceValue> ChildValue(const DocumentSource& source, const pugi::xml_node& parent,
                                      const char* name) {
  const pugi::xml_node child = parent.child(name);
  if (!child) {
    return std::nullopt;
  }
  const pugi::xpath_node text = parent.select_node((std::string(name) + "/text()").c_str());
  return SourceValue{name, text ? text.node().value() : "", source.PlaceOf(child)};
}

std::optional<SourceValue> AttributeValue(const DocumentSource& source,
                                          const pugi::xml_node& element, const char* name) {
  const pugi::xml_attribute attribute = element.attribute(name);
  if (!attribute) {
    return std::nullopt;
  }
  return SourceValue{name, attribute.value(), source.PlaceOf(element, attribute)};
}

long CheckNumber(const std::optional<SourceValue>& value, ProblemList& problems,
                 const std::string& meaningOfZero) {
  if (!value) {
    return 0;
  }
  const long number = AString::FromUtf8(value->m_Text).ToLong(10);
  const std::string trimmed = Trimmed(value->m_Text);
  const std::string asRead =
      "it is read as " + std::to_string(number) + (number == 0 ? meaningOfZero : "");
  if (trimmed.empty()) {
    problems.Warn(value->m_Place, value->m_Name + " is empty",
                  value->m_Text.empty() ? "it counts as if it were not there" : asRead,
                  "give it a decimal number or leave it out");
  } else if (!IsNumber(trimmed)) {
    problems.Warn(value->m_Place, value->m_Name + " " + Quoted(value->m_Text) + " is not a number",
                  asRead, "write a decimal number and nothing else");
  } else if (!FitsIn32Bits(trimmed)) {
    problems.Warn(value->m_Place,
                  value->m_Name + " " + Quoted(trimmed) + " is beyond the range of numbers", asRead,
                  "write a number from -2147483648 to 2147483647");
  }
  return number;
}

void CheckPlainText(const DocumentSource& source, const pugi::xml_node& element,
                    ProblemList& problems) {
  for (const pugi::xml_attribute& attribute : element.attributes()) {
    WarnUnknown("attribute", attribute.name(), source.PlaceOf(element, attribute), {},
                "nothing reads it", problems);
  }
  unsigned texts = 0;
  for (const pugi::xml_node& child : element.children()) {
    if (child.type() == pugi::node_element) {
      WarnUnknown("element", child.name(), source.PlaceOf(child), {}, "nothing reads it", problems);
    }
    const bool isText = child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata;
    if (isText && ++texts == 2) {
      problems.Warn(source.PlaceOf(child),
                    std::string("the text of ") + element.name() + " is in several pieces",
                    "only the first piece is read", "write it in one piece");
    }
  }
}

std::string Quoted(const std::string& text) {
  constexpr std::size_t LongestShown = 40;
  AString shown = AString::FromUtf8(text);
  if (shown.Length() > LongestShown) {
    shown = shown.Left(LongestShown) + L"...";
  }
  std::string line = shown.ToUtf8();
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, ' ');
  return "\"" + line + "\"";
}

std::string LocalTime(long moment) {
  return BaseSDK::ADateTime(moment).ToString("%Y-%m-%d %H:%M:%S").ToUtf8();
}

void WarnUnknown(const std::string& kind, const std::string& name, TextPlace place,
                 std::initializer_list<const char*> known, const std::string& effect,
                 ProblemList& problems) {
  const std::string nearest = NearestName(name, known);
  problems.Warn(place, "unknown " + kind + " " + Quoted(name), effect,
                nearest.empty() ? "remove it" : "write " + nearest + ", or remove it");
}

}  // namespace NoxAgent
