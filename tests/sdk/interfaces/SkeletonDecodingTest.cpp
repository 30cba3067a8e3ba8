#include "tests/sdk/interfaces/RecordingObjects.h"
#include "tests/support/Texts.h"

#include <AgentInterfacesV3/AInterfaceTable.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;
using TestSupport::Texts;

constexpr const char* SchedulerInterfaces[] = {"INoxObject", "INoxVeskClientAgent",
                                               "INoxTaskScheduler"};

AMsgValue SampleOf(AMsgType type) {
  switch (type) {
    case AMsgType::Long:
      return 7L;
    case AMsgType::ULong:
      return 8UL;
    case AMsgType::Bool:
      return true;
    case AMsgType::String:
      return AString("text");
    case AMsgType::StringMap:
      return AStringMap{{"k", "v"}};
  }
  return {};
}

void SetAll(AMsgIn& request, const AInterfaceTable::AOperation& operation) {
  for (const auto& argument : operation.Arguments()) {
    if (argument.IsIn()) {
      request.Set(argument.m_Name, SampleOf(argument.m_Type));
    }
  }
}

/// Runs `body` for every operation of the scheduler's interfaces.
template <class Body>
void ForEachOperation(Body body) {
  for (const char* name : SchedulerInterfaces) {
    const AInterfaceTable& table = *AInterfaceTable::Find(name);
    for (const auto& operation : table.m_Operations) {
      SCOPED_TRACE(std::string(table.m_Name) + "::" + std::string(operation.m_Name));
      body(table, operation);
    }
  }
}

class SkeletonDecoding : public testing::Test {
 protected:
  AMsgIn Request(std::string_view interfaceName, std::string_view operation) {
    return AMsgIn(interfaceName, operation, m_Reply);
  }

  /// Sends what must be refused, and checks that it was and that the object was left alone.
  void ExpectRefused(const AMsgIn& request, AMsgError code) {
    EXPECT_EQ(m_Object.ProcessRequest(&request), -1);
    ASSERT_TRUE(m_Reply.IsError());
    EXPECT_EQ(m_Reply.ErrorCode(), code) << m_Reply.ErrorText().ToUtf8();
    EXPECT_EQ(m_Object.m_Calls.All(), Texts());
  }

  void ExpectTextNames(std::string_view part) {
    EXPECT_NE(m_Reply.ErrorText().Find(AString::FromUtf8(part)), AString::npos)
        << m_Reply.ErrorText().ToUtf8() << " does not name " << part;
  }

  RecordingObjects::Scheduler m_Object;
  AMsgReply m_Reply;
};

TEST_F(SkeletonDecoding, EachRequestCallsTheOperationOfItsName) {
  std::size_t expected = 0;
  ForEachOperation([&](const AInterfaceTable& table, const AInterfaceTable::AOperation& row) {
    AMsgIn request = Request(table.m_Name, row.m_Name);
    SetAll(request, row);
    EXPECT_EQ(m_Object.ProcessRequest(&request), 1) << m_Reply.ErrorText().ToUtf8();
    ASSERT_EQ(m_Object.m_Calls.All().size(), ++expected);
    EXPECT_EQ(m_Object.m_Calls.All().back().find(std::string(row.m_Name) + "("), 0U)
        << m_Object.m_Calls.All().back();
  });
}

TEST_F(SkeletonDecoding, TheReplyHoldsTheOutArgumentsOfTheTable) {
  ForEachOperation([&](const AInterfaceTable& table, const AInterfaceTable::AOperation& row) {
    AMsgIn request = Request(table.m_Name, row.m_Name);
    SetAll(request, row);
    (void)m_Object.ProcessRequest(&request);
    std::size_t outCount = 0;
    for (const auto& argument : row.Arguments()) {
      const auto found = m_Reply.Out().find(argument.m_Name);
      ASSERT_EQ(found != m_Reply.Out().end(), argument.IsOut()) << argument.m_Name;
      if (argument.IsOut()) {
        ++outCount;
        EXPECT_EQ(TypeOf(found->second), argument.m_Type) << argument.m_Name;
      }
    }
    EXPECT_EQ(m_Reply.Out().size(), outCount);
  });
}

TEST_F(SkeletonDecoding, AMissingArgumentIsNamedAndTheObjectLeftAlone) {
  ForEachOperation([&](const AInterfaceTable& table, const AInterfaceTable::AOperation& row) {
    for (const auto& left : row.Arguments()) {
      if (!left.IsIn() || left.m_Optional) {
        continue;
      }
      AMsgIn request = Request(table.m_Name, row.m_Name);
      for (const auto& argument : row.Arguments()) {
        if (argument.IsIn() && argument.m_Name != left.m_Name) {
          request.Set(argument.m_Name, SampleOf(argument.m_Type));
        }
      }
      ExpectRefused(request, AMsgError::MissingArgument);
      ExpectTextNames(table.m_Name);
      ExpectTextNames(row.m_Name);
      ExpectTextNames("\"" + std::string(left.m_Name) + "\"");
    }
  });
}

TEST_F(SkeletonDecoding, AMistypedArgumentIsNamedAndTheObjectLeftAlone) {
  ForEachOperation([&](const AInterfaceTable& table, const AInterfaceTable::AOperation& row) {
    for (const auto& wrong : row.Arguments()) {
      for (const AMsgType type : {AMsgType::Long, AMsgType::ULong, AMsgType::Bool, AMsgType::String,
                                  AMsgType::StringMap}) {
        if (!wrong.IsIn() || type == wrong.m_Type) {
          continue;
        }
        AMsgIn request = Request(table.m_Name, row.m_Name);
        SetAll(request, row);
        request.Set(wrong.m_Name, SampleOf(type));
        ExpectRefused(request, AMsgError::MistypedArgument);
        ExpectTextNames(std::string(table.m_Name) + "::" + std::string(row.m_Name));
        ExpectTextNames("\"" + std::string(wrong.m_Name) + "\"");
        ExpectTextNames(std::string("not a ") + NameOf(type));
      }
    }
  });
}

TEST_F(SkeletonDecoding, AnUnexpectedArgumentIsNamedAndTheObjectLeftAlone) {
  ForEachOperation([&](const AInterfaceTable& table, const AInterfaceTable::AOperation& row) {
    AMsgIn request = Request(table.m_Name, row.m_Name);
    SetAll(request, row);
    request.Set("stranger", 1L);
    ExpectRefused(request, AMsgError::UnexpectedArgument);
    ExpectTextNames(std::string(table.m_Name) + "::" + std::string(row.m_Name));
    ExpectTextNames("\"stranger\"");
  });
}

TEST_F(SkeletonDecoding, AnOutArgumentInARequestIsUnexpected) {
  AMsgIn request = Request("INoxTaskScheduler", "GetTaskXML");
  request.Set("taskId", AString("a")).Set("taskXml", AString("<Task/>"));
  ExpectRefused(request, AMsgError::UnexpectedArgument);
  ExpectTextNames("\"taskXml\"");
}

TEST_F(SkeletonDecoding, AnUnknownOperationIsNamed) {
  ExpectRefused(Request("INoxTaskScheduler", "addTask"), AMsgError::UnknownOperation);
  ExpectTextNames("\"INoxTaskScheduler\"");
  ExpectTextNames("\"addTask\"");
}

TEST_F(SkeletonDecoding, AnOperationIsAskedForThroughTheInterfaceThatDeclaresIt) {
  ExpectRefused(Request("INoxTaskScheduler", "AgentQuery"), AMsgError::UnknownOperation);
  ExpectRefused(Request("INoxObject", "RefreshTaskList"), AMsgError::UnknownOperation);
}

TEST_F(SkeletonDecoding, AnInterfaceThatTheObjectDoesNotServeIsUnknown) {
  for (const char* name : {"INoxScheduledTaskHandler", "inoxtaskscheduler", "", "\xFF"}) {
    ExpectRefused(Request(name, "RefreshTaskList"), AMsgError::UnknownInterface);
    ExpectTextNames("\"" + std::string(name) + "\"");
  }
}

TEST_F(SkeletonDecoding, ArgumentsArriveAsSent) {
  AMsgIn add = Request("INoxTaskScheduler", "AddTask");
  add.Set("taskId", AString("backup")).Set("taskXml", AString("<Task a=\"1\"/>"));
  EXPECT_EQ(m_Object.ProcessRequest(&add), 1);
  EXPECT_EQ(m_Reply.Result(), 31);
  EXPECT_EQ(std::get<AString>(m_Reply.Out().at("newTaskId")), "new-backup");

  AMsgIn notify = Request("INoxObject", "NotifyObject");
  notify.Set("kind", 10L).Set("code", -300L).Set("text", AString(L"gr\u00fc\u00df"));
  EXPECT_EQ(m_Object.ProcessRequest(&notify), 1);

  AMsgIn enable = Request("INoxTaskScheduler", "EnableTask");
  enable.Set("taskIds", AString("a:b")).Set("enable", false);
  EXPECT_EQ(m_Object.ProcessRequest(&enable), 1);

  EXPECT_EQ(m_Object.m_Calls.All(),
            (Texts{"AddTask(\"backup\", \"<Task a=\"1\"/>\")",
                   "NotifyObject(10, -300, \"gr\xC3\xBC\xC3\x9F\")", "EnableTask(\"a:b\", 0)"}));
}

TEST_F(SkeletonDecoding, AnAbsentHandleIsZeroAndAFailureStillGivesTheHandleBack) {
  const AMsgIn request = Request("INoxTaskScheduler", "FindFirstTask");
  EXPECT_EQ(m_Object.ProcessRequest(&request), 1);
  EXPECT_EQ(m_Object.m_Calls.All(), Texts{"FindFirstTask(0)"});
  EXPECT_EQ(m_Reply.Result(), -34);
  EXPECT_EQ(std::get<unsigned long>(m_Reply.Out().at("handle")), ~0UL);
}

TEST_F(SkeletonDecoding, AHandleIsAsWideAsAWord) {
  constexpr unsigned long Widest = std::numeric_limits<unsigned long>::max();
  AMsgIn request = Request("INoxTaskScheduler", "FindClose");
  request.Set("handle", Widest);
  EXPECT_EQ(m_Object.ProcessRequest(&request), 1);
  EXPECT_EQ(m_Object.m_Calls.All(), Texts{"FindClose(" + std::to_string(Widest) + ")"});
}

TEST_F(SkeletonDecoding, AttributesThatAreThereAlreadyReachTheOperation) {
  AMsgIn request = Request("INoxTaskScheduler", "GetTaskAttributes");
  request.Set("taskId", AString("a")).Set("attributes", AStringMap{{"t0", "mine"}});
  EXPECT_EQ(m_Object.ProcessRequest(&request), 1);
  EXPECT_EQ(std::get<AStringMap>(m_Reply.Out().at("attributes")), (AStringMap{{"t0", "mine"}}));
  EXPECT_EQ(m_Object.m_Calls.All(), Texts{"GetTaskAttributes(\"a\", {t0=mine;}, \"null\")"});
}

TEST_F(SkeletonDecoding, AnAbsentInputMapIsANullPointerAndAnEmptyOneIsNot) {
  AMsgIn request = Request("INoxTaskScheduler", "GetTaskAttributes");
  request.Set("taskId", AString("a"));
  EXPECT_EQ(m_Object.ProcessRequest(&request), 1);
  request.Set("inputAttributes", AStringMap());
  EXPECT_EQ(m_Object.ProcessRequest(&request), 1);
  EXPECT_EQ(m_Object.m_Calls.All(), (Texts{"GetTaskAttributes(\"a\", {}, \"null\")",
                                           "GetTaskAttributes(\"a\", {}, \"{}\")"}));
}

TEST_F(SkeletonDecoding, ALongOutsideTheSigned32BitRangeIsMistypedAtBothWordSizes) {
  for (const long kind : {std::numeric_limits<long>::min(), std::numeric_limits<long>::max()}) {
    AMsgIn request = Request("INoxObject", "NotifyObject");
    request.Set("kind", kind).Set("code", 0L).Set("text", AString());
    if constexpr (sizeof(long) == 4) {
      EXPECT_EQ(m_Object.ProcessRequest(&request), 1);
    } else {
      ExpectRefused(request, AMsgError::MistypedArgument);
      ExpectTextNames("\"kind\"");
    }
  }
}

TEST_F(SkeletonDecoding, AnExceptionOfTheOperationIsAnError) {
  m_Object.m_Calls.m_Hook = [] { throw std::runtime_error("no more"); };
  const AMsgIn request = Request("INoxTaskScheduler", "RefreshTaskList");
  EXPECT_EQ(m_Object.ProcessRequest(&request), -1);
  EXPECT_EQ(m_Reply.ErrorCode(), AMsgError::OperationFailed);
  ExpectTextNames("INoxTaskScheduler::RefreshTaskList");
  ExpectTextNames("no more");
}

TEST_F(SkeletonDecoding, AnExceptionOfAnyOtherTypeIsAnErrorToo) {
  m_Object.m_Calls.m_Hook = [] { throw 5; };
  const AMsgIn request = Request("INoxTaskScheduler", "RefreshTaskList");
  EXPECT_EQ(m_Object.ProcessRequest(&request), -1);
  EXPECT_EQ(m_Reply.ErrorCode(), AMsgError::OperationFailed);
}

TEST_F(SkeletonDecoding, NoRequestIsRefused) {
  EXPECT_EQ(m_Object.ProcessRequest(nullptr), -1);
}

TEST(SkeletonDecodingOfHandlers, ServesObjectAndHandlerOperations) {
  RecordingObjects::Handler handler;
  AMsgReply reply;
  AMsgIn run("INoxScheduledTaskHandler", "RunTasksEx", reply);
  run.Set("batch", AString("a:0:1:0;"));
  EXPECT_EQ(handler.ProcessRequest(&run), 1);
  EXPECT_EQ(reply.Result(), 52);
  const AMsgIn inform("INoxObject", "ObjectDebugInfo", reply);
  EXPECT_EQ(handler.ProcessRequest(&inform), 1);
  const AMsgIn refused("INoxVeskClientAgent", "AgentStart", reply);
  EXPECT_EQ(handler.ProcessRequest(&refused), -1);
  EXPECT_EQ(reply.ErrorCode(), AMsgError::UnknownInterface);
  EXPECT_EQ(handler.m_Calls.All(), (Texts{"RunTasksEx(\"a:0:1:0;\")", "ObjectDebugInfo()"}));
}

TEST(SkeletonDecodingOfHandlers, TellsOfRunsAndJobs) {
  RecordingObjects::CommandHandler handler;
  AMsgReply reply;
  AMsgIn run("INoxCommandHandler", "GetRun", reply);
  run.Set("taskId", AString("a"));
  EXPECT_EQ(handler.ProcessRequest(&run), 1);
  EXPECT_EQ(reply.Result(), 61);
  EXPECT_EQ(std::get<AStringMap>(reply.Out().at("run")), (AStringMap{{"state", "running"}}));
  AMsgIn check("INoxCommandHandler", "CheckJob", reply);
  check.Set("taskId", AString("b"));
  EXPECT_EQ(handler.ProcessRequest(&check), 1);
  EXPECT_EQ(reply.Result(), -62);
  EXPECT_EQ(std::get<AString>(reply.Out().at("problem")), "no such job");
  AMsgIn put("INoxCommandHandler", "PutJob", reply);
  put.Set("taskId", AString("c"));
  EXPECT_EQ(handler.ProcessRequest(&put), -1) << "a job has a text";
  put.Set("text", AString("[Job]"));
  EXPECT_EQ(handler.ProcessRequest(&put), 1);
  EXPECT_EQ(reply.Result(), -63);
  EXPECT_EQ(std::get<AString>(reply.Out().at("problem")), "a bad job");
  AMsgIn output("INoxCommandHandler", "GetOutput", reply);
  output.Set("taskId", AString("d"));
  EXPECT_EQ(handler.ProcessRequest(&output), 1) << "the position may be left out";
  EXPECT_EQ(reply.Result(), 66);
  EXPECT_EQ(std::get<AString>(reply.Out().at("text")), "an output");
  EXPECT_EQ(std::get<AString>(reply.Out().at("next")), "behind it");
  AMsgIn stop("INoxCommandHandler", "StopRun", reply);
  stop.Set("taskId", AString("e"));
  EXPECT_EQ(handler.ProcessRequest(&stop), 1);
  EXPECT_EQ(reply.Result(), 67);
  const AMsgIn unnamed("INoxCommandHandler", "CheckJob", reply);
  EXPECT_EQ(handler.ProcessRequest(&unnamed), -1);
  EXPECT_EQ(reply.ErrorCode(), AMsgError::MissingArgument);
}

}  // namespace
