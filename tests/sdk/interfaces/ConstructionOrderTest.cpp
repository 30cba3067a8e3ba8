#include "tests/support/Texts.h"

#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The library's constructors do nothing that can be seen, so these stand in for them: a definition
// in the program comes before that of a shared library.
namespace {

std::vector<std::string>& Constructed() {
  static std::vector<std::string> names;
  return names;
}

}  // namespace

namespace Corvane::AgentInterfacesV3 {

AMsgQueueServer::AMsgQueueServer() {
  Constructed().emplace_back("AMsgQueueServer");
}
INoxObject_impl::INoxObject_impl() {
  Constructed().emplace_back("INoxObject_impl");
}
INoxVeskClientAgent_impl::INoxVeskClientAgent_impl() {
  Constructed().emplace_back("INoxVeskClientAgent_impl");
}
INoxTaskScheduler_impl::INoxTaskScheduler_impl() {
  Constructed().emplace_back("INoxTaskScheduler_impl");
}

}  // namespace Corvane::AgentInterfacesV3

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;

/// Has the bases of a plug-in's frame.
class Frame : public virtual AMsgQueueServer {
 public:
  Frame() { Constructed().emplace_back("Frame"); }
  virtual int Initialize() = 0;
};

/// Has the bases of a plug-in's server object.
class Object : public INoxTaskScheduler_impl, public Frame {
 public:
  Object() { Constructed().emplace_back("Object"); }

  int Initialize() override { return 1; }
  int ObjectDebugInfo(AString&) override { return 1; }
  int NotifyObject(long, long, const AString&) override { return 0; }
  int AgentStart() override { return 1; }
  int AgentStop() override { return 1; }
  int AgentRefresh() override { return 1; }
  int AgentQuery() override { return 1; }
  int AgentQueryUnload() override { return 0; }
  int AgentInstall() override { return 0; }
  int AgentUninstall() override { return 0; }
  int AgentUpgrade() override { return 0; }
  long AddTask(const AString&, const AString&, AString&) override { return 1; }
  long DeleteTask(const AString&) override { return 1; }
  long GetTaskXML(const AString&, AString&) override { return 1; }
  long FindFirstTask(unsigned long&, AString&) override { return 1; }
  long FindNextTask(unsigned long, AString&) override { return 1; }
  long FindClose(unsigned long) override { return 1; }
  long RefreshTaskList() override { return 1; }
  long SetRunState(const AString&, const AString&) override { return 0; }
  long GetTaskAttributes(const AString&, AStringMap&, const AStringMap*) override { return 1; }
  long EnableTask(const AString&, bool) override { return 1; }
};

TEST(ConstructionOrder, QueueServerThenSkeletonsFromTheRootThenFrame) {
  const Object object;
  EXPECT_EQ(Constructed(),
            (TestSupport::Texts{"AMsgQueueServer", "INoxObject_impl", "INoxVeskClientAgent_impl",
                                "INoxTaskScheduler_impl", "Frame", "Object"}));
}

}  // namespace
