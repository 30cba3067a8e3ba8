#pragma once

#include <BaseSDK/AString.h>
#include <BaseSDK/AXmlDoc.h>

#include <vector>

/// A task document, parsed: every query by which the scheduler reads one, and the one text that it
/// writes. A document that does not parse answers as one without any element: enabled, all texts
/// empty. docs/task-document.md describes the format.
class CTaskDocument {
 public:
  /// The text of `RunTime`: when the last run started and what became of it. Any of the three may
  /// be empty.
  struct Run {
    BaseSDK::AString m_Date;
    BaseSDK::AString m_Time;
    BaseSDK::AString m_State;
  };

  explicit CTaskDocument(const BaseSDK::AString& text) : m_Doc(text) {}

  /// True without the attribute; a value that is not a number disables.
  bool IsEnabled() const;
  /// The text of `HandlerCLSID`.
  BaseSDK::AString HandlerClassId() const;
  /// Of the first `RunTime` in document order.
  Run LastRun() const;
  /// The markup of the first `TaskHistory`; empty when there is none.
  BaseSDK::AString History() const;
  /// The markup of every `Trigger`, in document order, at any depth.
  std::vector<BaseSDK::AString> Triggers();

  /// The document as the scheduler writes it: `enabled`, the handler, the schedule and `history`,
  /// the complete markup of a TaskHistory element. Kept on purpose: everything else that the
  /// document held is dropped, and a missing element leaves an empty place between its separators.
  BaseSDK::AString Rewritten(bool enabled, const BaseSDK::AString& history) const;

  /// The history of one run: a TaskHistory element holding the one RunTime entry that is ever kept.
  /// `startTime` is date, blank and time. The state goes in as it is given, without escaping.
  static BaseSDK::AString HistoryOf(const BaseSDK::AString& startTime,
                                    const BaseSDK::AString& state);

 private:
  BaseSDK::AXmlDoc m_Doc;
};
