#pragma once

#include "agent/daemon/store/ForwardingFileSystem.h"

#include <BaseSDK/AMutex.h>

namespace NoxAgent {

/// Keeps one descriptor in reserve for the kit's file calls. When the process or the system has no
/// other left (EMFILE, ENFILE), it gives the reserve up and opens the file with it; it fills the
/// reserve again when a file is closed. Without this, one moment without descriptors would cost the
/// scheduler all its tasks until the next reading.
///
/// [any thread]
class SparingFileSystem final : public ForwardingFileSystem {
 public:
  explicit SparingFileSystem(AFileSystem& below);
  ~SparingFileSystem() override;
  SparingFileSystem(const SparingFileSystem&) = delete;
  SparingFileSystem& operator=(const SparingFileSystem&) = delete;

  int Open(const char* path, int flags, unsigned mode, int& fd) override NOX_EXCLUDES(m_Lock);
  int Close(int fd) override NOX_EXCLUDES(m_Lock);
  int OpenDirectory(const char* path, unsigned long& handle) override NOX_EXCLUDES(m_Lock);
  int CloseDirectory(unsigned long handle) override NOX_EXCLUDES(m_Lock);

 private:
  template <class OpenCall>
  int WithSpare(const OpenCall& open) NOX_EXCLUDES(m_Lock);
  void Refill() NOX_EXCLUDES(m_Lock);
  void FillSpare() NOX_REQUIRES(m_Lock);

  BaseSDK::AMutex m_Lock;
  int m_Spare NOX_GUARDED_BY(m_Lock) = -1;
};

}  // namespace NoxAgent
