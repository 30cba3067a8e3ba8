#include "Common/PluginBase.h"

#include "tests/support/LogCapture.h"
#include "tests/support/RawSlots.h"
#include "tests/support/Texts.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using BaseSDK::AGuid;
using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgQueue;
using Corvane::AgentInterfacesV3::AMsgQueueServer;
using TestSupport::LogCapture;
using TestSupport::SlotAt;
using TestSupport::SlotOf;
using TestSupport::Texts;

/// What the objects of this file answer, and what became of them.
struct World {
  bool m_NoMemory = false;
  bool m_Throws = false;
  int m_Initialized = 1;
  int m_Uninitialized = 1;
  std::vector<std::string> m_Calls{};
};

World world;

void Note(std::string call) {
  world.m_Calls.push_back(std::move(call));
  if (world.m_Throws) {
    throw std::runtime_error("broken");
  }
}

class FakeServer : public APluginBase {
 public:
  FakeServer() { Note("made"); }
  ~FakeServer() override { world.m_Calls.push_back("destroyed"); }

  long ProcessRequest(const AMsgIn* /*request*/) override { return 1; }
  int QueryInterface(const UUID& /*interfaceId*/, void*& /*object*/) override { return 10; }
  int QueryInterface(const AGuid& /*interfaceId*/, void*& /*object*/) override { return 11; }
  int GetVersion() override { return 12; }
  int Initialize() override {
    Note("Initialize");
    return world.m_Initialized;
  }
  int Uninitialize(unsigned int forced) override {
    Note("Uninitialize " + std::to_string(forced));
    return world.m_Uninitialized;
  }
  int GetAttribute(const char* name, AString& value) override {
    Note(std::string("GetAttribute ") + name);
    value = L"answer";
    return 15;
  }
};

std::optional<int> openResult;

}  // namespace

// The linker sends the frame's opening of the queue here (--wrap).
extern "C" {

using OpenQueue = int(AMsgQueueServer*, int);

OpenQueue __real__ZN7Corvane17AgentInterfacesV315AMsgQueueServer4OpenEi;
OpenQueue __wrap__ZN7Corvane17AgentInterfacesV315AMsgQueueServer4OpenEi;

int __wrap__ZN7Corvane17AgentInterfacesV315AMsgQueueServer4OpenEi(AMsgQueueServer* server,
                                                                  int queue) {
  return openResult ? *openResult
                    : __real__ZN7Corvane17AgentInterfacesV315AMsgQueueServer4OpenEi(server, queue);
}

}  // extern "C"

namespace {

constexpr int Queue = 7;
constexpr int NoQueue = 8;

class PluginBaseTest : public ::testing::Test {
 protected:
  PluginBaseTest() { world = World(); }
  ~PluginBaseTest() override {
    world = World();
    EXPECT_EQ(1, PluginUninitialize(true));
  }

  Texts Traces() const { return m_Log.Messages(ALogger::Trace); }

  AMsgQueue m_Queue{Queue};
  LogCapture m_Log;
};

TEST_F(PluginBaseTest, InitializeMakesTheObjectOpensItsQueueAndInitializesIt) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(world.m_Calls, (Texts{"made", "Initialize"}));
  EXPECT_TRUE(m_Queue.HasObject());
  EXPECT_EQ(m_Log.Lines(), std::vector<LogCapture::Line>());
}

TEST_F(PluginBaseTest, OnlyANegativeResultOfTheQueueKeepsTheObjectFromBeingInitialized) {
  for (const int result : {0, 1, -1, -2147483647 - 1}) {
    world = World();
    openResult = result;
    world.m_Initialized = 5;
    EXPECT_EQ(result < 0 ? result : 5, PluginInitialize(Queue));
    EXPECT_EQ(result < 0 ? 1U : 2U, world.m_Calls.size());
    openResult.reset();
    EXPECT_EQ(1, PluginUninitialize(true));
  }
}

TEST_F(PluginBaseTest, InitializeTwiceIsOneAndMakesNoSecondObject) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  world.m_Initialized = -1;
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(world.m_Calls, (Texts{"made", "Initialize"}));
}

TEST_F(PluginBaseTest, InitializeFailsWithoutAnObjectAndSaysSo) {
  world.m_NoMemory = true;
  EXPECT_EQ(-1, PluginInitialize(Queue));
  ASSERT_EQ(1U, m_Log.Lines().size());
  const LogCapture::Line line = m_Log.Lines()[0];
  EXPECT_EQ(ALogger::Error, line.m_Level);
  EXPECT_EQ(AString(L"PluginInitialize(): Failed to create server class\n"), line.m_Message);
  EXPECT_EQ("Corvane::Agent::Common::PluginBase", line.m_Channel);
  EXPECT_EQ("Common/PluginBase", line.m_Source);
  EXPECT_GT(line.m_Number, 0);
}

TEST_F(PluginBaseTest, AnExceptionOfTheObjectIsAFailureOfTheCallAndTheObjectStays) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  world.m_Throws = true;
  AString value(L"before");
  EXPECT_EQ(-1, PluginGetAttributeV3("name", value));
  EXPECT_EQ(-1, PluginUninitialize(true));
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            (Texts{"PluginGetAttributeV3(): broken", "PluginUninitialize(): broken"}));
  EXPECT_EQ(Traces(), (Texts{"PluginUninitialize(): enter.", "PluginUninitialize(): leave."}));
  world.m_Throws = false;
  EXPECT_EQ(1, PluginUninitialize(true));
  EXPECT_EQ("destroyed", world.m_Calls.back());
}

TEST_F(PluginBaseTest, AnExceptionWhileTheObjectIsMadeLeavesNone) {
  world.m_Throws = true;
  EXPECT_EQ(-1, PluginInitialize(Queue));
  EXPECT_EQ(m_Log.Messages(ALogger::Warning), Texts{"PluginInitialize(): broken"});
  world.m_Throws = false;
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(world.m_Calls, (Texts{"made", "made", "Initialize"}));
}

TEST_F(PluginBaseTest, InitializeTriesAgainAfterNoObject) {
  world.m_NoMemory = true;
  EXPECT_EQ(-1, PluginInitialize(Queue));
  world.m_NoMemory = false;
  EXPECT_EQ(1, PluginInitialize(Queue));
}

TEST_F(PluginBaseTest, AnObjectWithoutQueueOnPurposeStaysAndASecondInitializeIsOne) {
  EXPECT_LT(PluginInitialize(NoQueue), 0);
  EXPECT_EQ(world.m_Calls, Texts{"made"});
  EXPECT_EQ(m_Log.Lines(), std::vector<LogCapture::Line>());
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(world.m_Calls, Texts{"made"}) << "not initialised";
  EXPECT_FALSE(m_Queue.HasObject());
}

TEST_F(PluginBaseTest, AFailedInitializeIsPassedOnAndTheObjectStays) {
  world.m_Initialized = -1;
  EXPECT_EQ(-1, PluginInitialize(Queue));
  EXPECT_EQ(m_Log.Lines(), std::vector<LogCapture::Line>());
  AString value;
  EXPECT_EQ(15, PluginGetAttributeV3("x", value));
}

TEST_F(PluginBaseTest, UninitializeDestroysAnObjectThatAgrees) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  world.m_Uninitialized = 2;
  EXPECT_EQ(2, PluginUninitialize(false));
  EXPECT_EQ(world.m_Calls, (Texts{"made", "Initialize", "Uninitialize 0", "destroyed"}));
  EXPECT_EQ(Traces(),
            (Texts{"PluginUninitialize(): enter.",
                   "PluginUninitialize(): Plugin agreed to unload - destroying server class.",
                   "PluginUninitialize(): leave."}));
  EXPECT_FALSE(m_Queue.HasObject());
}

TEST_F(PluginBaseTest, UninitializeKeepsAnObjectThatRefuses) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  for (const int refusal : {0, -1, -5}) {
    world.m_Uninitialized = refusal;
    m_Log.Clear();
    EXPECT_EQ(refusal, PluginUninitialize(false));
    EXPECT_EQ(Traces(), (Texts{"PluginUninitialize(): enter.",
                               "PluginUninitialize(): Plugin refused to unload.\n",
                               "PluginUninitialize(): leave."}));
    EXPECT_EQ(3U, m_Log.Lines().size());
  }
  AString value;
  EXPECT_EQ(15, PluginGetAttributeV3("x", value));
}

TEST_F(PluginBaseTest, UninitializeWarnsOfAForcedUnloadThatFails) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  world.m_Uninitialized = 0;
  EXPECT_EQ(0, PluginUninitialize(true));
  EXPECT_EQ("Uninitialize 1", world.m_Calls.back());
  EXPECT_EQ(m_Log.Messages(ALogger::Warning),
            Texts{"PluginUninitialize(): Plugin failed forced unload!\n"});
  EXPECT_EQ(Traces(), (Texts{"PluginUninitialize(): enter.", "PluginUninitialize(): leave."}));
  AString value;
  EXPECT_EQ(15, PluginGetAttributeV3("x", value));
}

TEST_F(PluginBaseTest, UninitializeWithoutObjectIsOneWithItsTwoLines) {
  for (const bool forced : {false, true}) {
    m_Log.Clear();
    EXPECT_EQ(1, PluginUninitialize(forced));
    EXPECT_EQ(Traces(), (Texts{"PluginUninitialize(): enter.", "PluginUninitialize(): leave."}));
    EXPECT_EQ(2U, m_Log.Lines().size());
  }
  EXPECT_EQ(world.m_Calls, Texts());
}

TEST_F(PluginBaseTest, CanBeInitializedAgainAfterUnloading) {
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(1, PluginUninitialize(true));
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(world.m_Calls,
            (Texts{"made", "Initialize", "Uninitialize 1", "destroyed", "made", "Initialize"}));
}

TEST_F(PluginBaseTest, GetAttributeAsksTheObject) {
  AString value;
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(15, PluginGetAttributeV3("Any", value));
  EXPECT_EQ(AString(L"answer"), value);
  EXPECT_EQ("GetAttribute Any", world.m_Calls.back());
}

TEST_F(PluginBaseTest, GetAttributeFailsBeforeAndAfterTheObject) {
  AString value(L"before");
  EXPECT_EQ(-1, PluginGetAttributeV3("Any", value));
  EXPECT_EQ(1, PluginInitialize(Queue));
  EXPECT_EQ(1, PluginUninitialize(true));
  EXPECT_EQ(-1, PluginGetAttributeV3("Any", value));
  EXPECT_EQ(AString(L"before"), value);
}

TEST(InterfaceFactory, HasThreeSlotsAndNothingElse) {
  EXPECT_EQ(sizeof(void*), sizeof(INoxInterfaceFactory));
  EXPECT_FALSE(std::has_virtual_destructor_v<INoxInterfaceFactory>);
  using ByBytes = int (INoxInterfaceFactory::*)(const UUID&, void*&);
  using ByGuid = int (INoxInterfaceFactory::*)(const AGuid&, void*&);
  EXPECT_EQ(0, SlotOf(static_cast<ByBytes>(&INoxInterfaceFactory::QueryInterface)));
  EXPECT_EQ(1, SlotOf(static_cast<ByGuid>(&INoxInterfaceFactory::QueryInterface)));
  EXPECT_EQ(2, SlotOf(&INoxInterfaceFactory::GetVersion));
}

TEST(PluginBase, AddsItsSlotsBehindTheDestructors) {
  // Slots 3 and 4 are the destructor, complete and deleting.
  EXPECT_EQ(5, SlotOf(&APluginBase::Initialize));
  EXPECT_EQ(6, SlotOf(&APluginBase::Uninitialize));
  EXPECT_EQ(7, SlotOf(&APluginBase::GetAttribute));
}

TEST(PluginBase, HasNoDataOfItsOwn) {
  struct Bases : INoxInterfaceFactory, virtual AMsgQueueServer {};
  EXPECT_EQ(sizeof(Bases), sizeof(APluginBase));
  EXPECT_TRUE((std::is_base_of_v<AMsgQueueServer, APluginBase>));
}

TEST(PluginBase, IsDestroyedThroughItsFifthSlot) {
  world = World();
  APluginBase* const object = new FakeServer;
  SlotAt<void (*)(void*)>(object, 4)(object);
  EXPECT_EQ(world.m_Calls, (Texts{"made", "destroyed"}));
}

TEST(PluginBase, AnswersThroughTheRawSlotsOfItsFactory) {
  FakeServer server;
  INoxInterfaceFactory* const factory = &server;
  EXPECT_EQ(static_cast<void*>(static_cast<APluginBase*>(&server)), static_cast<void*>(factory));
  void* object = nullptr;
  const UUID uuid{};
  const AGuid guid;
  EXPECT_EQ(10, (SlotAt<int (*)(void*, const UUID&, void*&)>(factory, 0)(factory, uuid, object)));
  EXPECT_EQ(11, (SlotAt<int (*)(void*, const AGuid&, void*&)>(factory, 1)(factory, guid, object)));
  EXPECT_EQ(12, SlotAt<int (*)(void*)>(factory, 2)(factory));
}

}  // namespace

APluginBase* PluginMain() {
  return world.m_NoMemory ? nullptr : new FakeServer;
}
