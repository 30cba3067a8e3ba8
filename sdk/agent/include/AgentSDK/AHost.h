#pragma once

#include <BaseSDK/AGuid.h>
#include <BaseSDK/AString.h>

namespace AgentSDK {

/// The host seam: everything a plug-in asks of the agent passes through here. There is one host a
/// process; the agent puts it in place before it loads the first plug-in, a test puts its own.
///
/// Plug-ins do not call it; they use APluginMgr, NTracker and CIGetObjectInterface, which forward
/// to it. Every operation may be called from any thread, with locks of the caller held.
class AHost {
 public:
  AHost() = default;
  AHost(const AHost&) = delete;
  AHost& operator=(const AHost&) = delete;
  virtual ~AHost() = default;

  /// From now on `subscriber` is told when one of the `count` notifications `codes` is posted; the
  /// array is only read during the call. At least 1 when subscribed, below 1 when refused.
  virtual long Subscribe(const BaseSDK::AString& subscriber, const long* codes, unsigned count) = 0;

  /// Takes the notification and returns; at least 1 when taken. Subscribers hear of it later, on a
  /// thread of the host and never on the caller's: callers may hold locks that receivers take.
  virtual long PostNotification(long code, const BaseSDK::AString& text) = 0;

  /// The value of a key of the calling plug-in's configuration, %installdir% resolved; `fallback`
  /// when the key is not there.
  virtual BaseSDK::AString GetConfigString(const BaseSDK::AString& section,
                                           const BaseSDK::AString& key,
                                           const BaseSDK::AString& fallback) = 0;

  /// Opens the interface `interfaceId` of the object `classId` ("{...}"). On success `object` is a
  /// pointer to the interface's class, to be released once through its Release. A negative result
  /// is failure, and `object` is then null. `flags` is 0.
  virtual long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                          unsigned long flags, void*& object) = 0;

  /// The host in place, or null. Borrowed: whoever put it there keeps it alive until every plug-in
  /// is unloaded.
  static AHost* Current();

  /// Puts `host` (null: none) in place and returns the one that was there. Safe against Current on
  /// other threads; calls that are under way on the earlier host are not waited for.
  static AHost* Replace(AHost* host);
};

}  // namespace AgentSDK
