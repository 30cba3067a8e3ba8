// What our kit has put into headers of the host's. The plug-in must do without: the closed host
// need not have it. Read before each of its sources, behind those headers.
#undef ALOG
#undef NOX_ACQUIRE
#undef NOX_ACQUIRED_AFTER
#undef NOX_ACQUIRED_BEFORE
#undef NOX_CAPABILITY
#undef NOX_EXCLUDES
#undef NOX_GUARDED_BY
#undef NOX_NO_THREAD_SAFETY_ANALYSIS
#undef NOX_PT_GUARDED_BY
#undef NOX_RELEASE
#undef NOX_REQUIRES
#undef NOX_RETURN_CAPABILITY
#undef NOX_SCOPED_CAPABILITY
#undef NOX_THREAD_ANNOTATION
#undef NOX_TRY_ACQUIRE

// One name a line: HostNames.cmake reads them.
#pragma GCC poison ALOG
#pragma GCC poison AStringMap
#pragma GCC poison Ascii
#pragma GCC poison AXmlError
#pragma GCC poison AutoReset
#pragma GCC poison CALL_NOT_DELIVERED
#pragma GCC poison ClockChanged
#pragma GCC poison ClockSkewAlignToSecond
#pragma GCC poison ClockSkewEndOnResume
#pragma GCC poison ClockSkewEndOnSet
#pragma GCC poison ClockSkewIgnore
#pragma GCC poison ClockSkewNeverEarly
#pragma GCC poison FromUtf8
#pragma GCC poison IsParsed
#pragma GCC poison ManualReset
#pragma GCC poison MaxReadBytes
#pragma GCC poison NOX_EXCLUDES
#pragma GCC poison NOX_GUARDED_BY
#pragma GCC poison NOX_REQUIRES
#pragma GCC poison RemoveLeftovers
#pragma GCC poison ReplaceExisting
#pragma GCC poison TimedOut
#pragma GCC poison ToUtf8
#pragma GCC poison TryLock
#pragma GCC poison WasSet
