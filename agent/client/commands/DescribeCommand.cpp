#include "agent/client/TaskPhrase.h"
#include "agent/client/TaskSource.h"
#include "agent/client/ZoneInForce.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/TaskDocumentCheck.h"

#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

struct DescribeOptions {
  std::string m_Task, m_Zone;
};

void Describe(const DescribeOptions& options, const CommandContext& context) {
  const TaskSource source = FindTask(options.m_Task, context);
  const ZoneInForce zone(options.m_Zone, source.m_Live);
  const long now = source.m_Live ? source.m_Live->m_AskedAt : std::time(nullptr);
  TaskPhrase said = SayTask(source.m_Document.m_Xml, source.m_Live, CalendarForCheck(now), now);
  if (!zone.Note().empty()) {
    said.m_Notes.push_back(zone.Note());
  }
  if (context.m_Json) {
    return context.PrintJson(
        {{"words", said.m_Words}, {"notes", said.m_Notes}, {"returns", ReturnJson(source.m_Live)}});
  }
  if (!said.m_Words.empty()) {
    context.m_Out << said.m_Words << '\n';
  }
  for (const std::string& note : said.m_Notes) {
    context.m_Out << note << '\n';
  }
}

}  // namespace

void AddDescribeCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "describe", "Say in the words of create when a task runs from now on; a file needs no agent");
  const auto options = std::make_shared<DescribeOptions>();
  command.Argument("TASK", options->m_Task, "task document, - for standard input, or task ID")
      .Required();
  command.Option("--zone", options->m_Zone, "time zone: a name or a rule").Takes("ZONE");
  command.OnUse([options, &context] { Describe(*options, context); });
}

}  // namespace NoxAgent
