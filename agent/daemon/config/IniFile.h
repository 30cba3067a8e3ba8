#pragma once

#include "agent/daemon/AgentError.h"

#include <BaseSDK/AIniText.h>
#include <BaseSDK/AString.h>

namespace NoxAgent {

/// A configuration file. What an INI text is, and what is wrong with one: see BaseSDK::AIniText.
class IniFile {
 public:
  using Entry = BaseSDK::AIniText::Entry;
  using Section = BaseSDK::AIniText::Section;

  /// Both throw AgentError that names the file and, for what the file says, the line.
  static IniFile Load(const BaseSDK::AString& fileName);
  static IniFile Parse(const BaseSDK::AString& fileName, const BaseSDK::AString& text);

  const BaseSDK::AString& FileName() const { return m_Text.FileName(); }
  const std::vector<Section>& Sections() const { return m_Text.Sections(); }

  /// The error for a value in that line that the caller finds bad: "FILE:LINE: message". The caller
  /// throws it.
  AgentError ErrorAt(unsigned line, const BaseSDK::AString& message) const;

 private:
  explicit IniFile(BaseSDK::AIniText text) : m_Text(std::move(text)) {}

  BaseSDK::AIniText m_Text;
};

}  // namespace NoxAgent
