// Reads single values as the scheduler reads them, and warns where the scheduler reads something
// else than they say.
#pragma once

#include "agent/document/ProblemList.h"

#include <initializer_list>
#include <optional>
#include <string>

namespace NoxAgent {

/// A value as it stands in the document.
struct SourceValue {
  std::string m_Name;  ///< as it is called in messages: "Interval"
  std::string m_Text;
  TextPlace m_Place;
};

/// The first text of the children of `parent` that are called `name`, with the place of that child;
/// nothing when there is no such child. A child without text gives an empty text.
std::optional<SourceValue> ChildValue(const DocumentSource& source, const pugi::xml_node& parent,
                                      const char* name);
/// The value of the attribute `name`, with its place; nothing when there is none.
std::optional<SourceValue> AttributeValue(const DocumentSource& source,
                                          const pugi::xml_node& element, const char* name);

/// The number that the scheduler reads; 0 for a missing value. Warns about a text that is empty, no
/// number, or beyond the signed 32-bit range. `meaningOfZero` ends the sentence "it is read as 0".
long CheckNumber(const std::optional<SourceValue>& value, ProblemList& problems,
                 const std::string& meaningOfZero = {});

/// Warns about everything in an element that is to hold one text and nothing else: attributes,
/// elements, a text in several pieces (of which the scheduler reads the first).
void CheckPlainText(const DocumentSource& source, const pugi::xml_node& element,
                    ProblemList& problems);

/// `text` for a message: in quotes, on one line, cut when it is long.
std::string Quoted(const std::string& text);

/// A moment for a message: "2030-12-31 08:00:00", local time.
std::string LocalTime(long moment);

/// Warns about an element or attribute that nothing reads. `known` are the names that may stand
/// there; when one is close to `name`, the warning suggests it. `kind` is the word for it, `effect`
/// says what becomes of it.
void WarnUnknown(const std::string& kind, const std::string& name, TextPlace place,
                 std::initializer_list<const char*> known, const std::string& effect,
                 ProblemList& problems);

}  // namespace NoxAgent
