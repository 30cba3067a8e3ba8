#include "agent/Protocol.h"
#include "agent/client/ComingRuns.h"
#include "agent/client/LocalTime.h"
#include "agent/client/NewJob.h"
#include "agent/client/TaskPhrase.h"
#include "agent/client/TaskWithJob.h"
#include "agent/client/ZoneInForce.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/AsciiDocument.h"
#include "agent/document/TaskDocumentCheck.h"
#include "agent/document/TaskId.h"
#include "agent/document/TaskWriter.h"
#include "agent/phrase/PhraseGrammar.h"
#include "agent/phrase/PhraseReader.h"
#include "agent/phrase/PhraseTriggers.h"

#include <BaseSDK/AString.h>

#include <algorithm>
#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

constexpr unsigned RunsShown = 3;

struct CreateOptions {
  std::string m_Name, m_Id, m_From, m_Until, m_Description;
  std::vector<std::string> m_When;
  NewJob m_Job;
  bool m_Disabled = false, m_DryRun = false, m_Replace = false;

  const std::string& Id() const { return m_Id.empty() ? m_Name : m_Id; }
};

// A task that was made of words, and what is told of it.
struct Creation {
  TaskWithJob m_Task;
  std::string m_Words;
  std::string m_Command;
  std::vector<long> m_Runs;
  std::vector<std::string> m_Notes;
};

void CheckId(const std::string& id) {
  const BaseSDK::AString fault = FaultOfTaskId(BaseSDK::AString::FromUtf8(id), {});
  if (!fault.IsEmpty()) {
    throw CommandError(ExitCode::Usage,
                       "the task cannot be called \"" + id + "\": it " + fault.ToUtf8());
  }
}

[[noreturn]] void RefuseSpan(const char* option) {
  throw CommandError(ExitCode::Usage,
                     std::string(option) +
                         " is for rules that do not say so themselves, and is of no "
                         "meaning to now and once");
}

// Gives the rules the span of the options. Each option has a rule to be for.
void AddSpan(const CreateOptions& options, const LocalCalendar& calendar, Phrase& phrase) {
  bool isFromUsed = options.m_From.empty(), isUntilUsed = options.m_Until.empty();
  for (PhraseRule& rule : phrase) {
    if (rule.m_Days == PhraseRule::Days::Now || rule.m_Days == PhraseRule::Days::Once) {
      continue;
    }
    if (rule.m_From == NoTime && !options.m_From.empty()) {
      rule.m_From = ReadPhraseMoment("--from", options.m_From, calendar, false);
      isFromUsed = true;
    }
    if (rule.m_Until == NoTime && !options.m_Until.empty()) {
      rule.m_Until = ReadPhraseMoment("--until", options.m_Until, calendar, true);
      isUntilUsed = true;
    }
  }
  if (!isFromUsed || !isUntilUsed) {
    RefuseSpan(isFromUsed ? "--until" : "--from");
  }
}

Phrase ReadWhen(const CreateOptions& options, const LocalCalendar& calendar, long now) {
  Phrase phrase = ReadPhrase(options.m_When, calendar, now);
  AddSpan(options, calendar, phrase);
  return phrase;
}

void CheckDescription(const std::string& text) {
  const bool hasControls = std::any_of(text.begin(), text.end(), [](unsigned char character) {
    return character < ' ' || character == 0x7F;
  });
  if (hasControls || AsciiDocument(BaseSDK::AString::FromUtf8(text)).Problem()) {
    throw CommandError(ExitCode::Usage,
                       "the description has control characters in it, or is no UTF-8");
  }
}

// The document from the words; then the words again from the document, as the scheduler has it.
Creation Make(const CreateOptions& options, long now) {
  const LocalCalendar calendar = CalendarForCheck(now);
  Creation made;
  NewTaskDocument document;
  try {
    document.m_Triggers = MakeTriggers(ReadWhen(options, calendar, now), calendar, now);
  } catch (const PhraseError& error) {
    throw CommandError(ExitCode::Usage, error.what());
  }
  document.m_HandlerClassId = CommandHandlerClassId;
  document.m_Description = options.m_Description.empty() && !options.m_Id.empty()
                               ? options.m_Name
                               : options.m_Description;
  CheckDescription(document.m_Description);
  made.m_Task = {options.Id(), WriteTaskDocument(document), WriteJob(options.m_Job)};
  const TaskPhrase said = SayTask(made.m_Task.m_Document, {}, calendar, now);
  made.m_Words = said.m_Words;
  made.m_Notes = said.m_Notes;
  made.m_Command = CommandWords(options.m_Job);
  made.m_Runs = ComingRuns(made.m_Task.m_Document, now, RunsShown);
  if (options.m_Disabled) {
    document.m_Enabled = false;
    made.m_Task.m_Document = WriteTaskDocument(document);
    made.m_Notes.push_back("The task is disabled: noxctl enable " + options.Id() +
                           " has it run; these would be its runs.");
  }
  return made;
}

void RefuseExisting(AgentApi& agent, const CreateOptions& options) {
  if (!options.m_Replace && agent.TaskXml(options.Id())) {
    throw CommandError(ExitCode::Failed, "there is a task " + options.Id() +
                                             " already; noxctl edit changes it, --replace puts "
                                             "this one in its place");
  }
}

void Print(const Creation& made, const CommandContext& context) {
  std::ostream& out = context.m_Out;
  out << made.m_Task.m_Id << ": " << made.m_Words << '\n';
  const char* name = "  next runs  ";
  for (const long run : made.m_Runs) {
    out << name << LocalTimeText(run) << '\n';
    name = "             ";
  }
  out << "  command    " << made.m_Command << '\n';
  for (const std::string& note : made.m_Notes) {
    out << "  note       " << note << '\n';
  }
}

void PrintFiles(const Creation& made, const CommandContext& context) {
  context.m_Out << "\n# " << made.m_Task.m_Id << ".xml\n"
                << made.m_Task.m_Document << "\n# " << made.m_Task.m_Id << ".job\n"
                << *made.m_Task.m_Job;
}

Json ToJson(const Creation& made) {
  Json runs = Json::List{};
  for (const long run : made.m_Runs) {
    runs.Append({{"seconds", run}, {"local", LocalTimeText(run)}});
  }
  return {{"id", made.m_Task.m_Id},
          {"words", made.m_Words},
          {"nextRuns", runs},
          {"notes", made.m_Notes},
          {"document", made.m_Task.m_Document},
          {"job", *made.m_Task.m_Job}};
}

void Create(const CreateOptions& options, const CommandContext& context) {
  CheckId(options.Id());
  AgentApi agent = context.Agent();
  const auto live = ReadAgentsZone(agent, options.m_DryRun);
  const ZoneInForce zone("", live);
  Creation made = Make(options, std::time(nullptr));
  if (!zone.Note().empty()) {
    made.m_Notes.push_back(zone.Note());
  }
  if (!options.m_DryRun) {
    RefuseExisting(agent, options);
    for (const std::string& warning : AddWithJob(agent, made.m_Task)) {
      context.PrintWarning({{"id", made.m_Task.m_Id}, {"message", warning}});
    }
  }
  if (context.m_Json) {
    return context.PrintJson(ToJson(made));
  }
  Print(made, context);
  if (options.m_DryRun) {
    PrintFiles(made, context);
  }
}

void AddJobOptions(CommandLine& command, NewJob& job) {
  command.Option("--user", job.m_User, "the user to run as (default: the agent's)").Takes("USER");
  command.Option("--directory", job.m_Directory, "the working directory").Takes("DIR");
  command.Option("--timeout", job.m_Timeout, "end a run after this time: 30s, 5m, 1h30m")
      .Takes("TIME");
  command
      .Option("--overlap", job.m_Overlap,
              "when the previous run goes on: skip, queue, kill or allow")
      .Takes("RULE");
  command
      .Option("--retry", job.m_Retry,
              "when it fails: never (as usual), hourly, or how often: \"3 every 5m\"")
      .Takes("RULE");
  command.Option("--env", job.m_Variables, "a variable of the command's environment")
      .Takes("NAME=VALUE");
  command.Option("--set", job.m_Keys, "any other key of a job").Takes("KEY=VALUE");
}

}  // namespace

void AddCreateCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "create", "Have a command run on a schedule: noxctl create NAME WHEN... -- COMMAND");
  const auto options = std::make_shared<CreateOptions>();
  command.Argument("NAME", options->m_Name, "what the task is called").Required();
  command.Argument("WHEN", options->m_When, "the schedule in words, below");
  command.Explain("WHEN is, with | between alternatives and [...] around what may be left out:\n" +
                  PhraseGrammarText("  "));
  command.Tail("COMMAND [ARGUMENTS]", options->m_Job.m_Command,
               "what runs; a shell's line in quotes is run by /bin/sh");
  command.Option("--from", options->m_From, "no start before").Takes("TIME");
  command.Option("--until", options->m_Until, "no run after").Takes("TIME");
  command.Option("--id", options->m_Id, "the task's ID (default: NAME)").Takes("ID");
  command.Option("--description", options->m_Description, "a text for people").Takes("TEXT");
  command.Flag("--disabled", options->m_Disabled, "add it disabled");
  command.Flag("--replace", options->m_Replace, "put it in the place of a task of that name");
  command.Flag("--dry-run", options->m_DryRun, "add nothing; print document and job");
  AddJobOptions(command, options->m_Job);
  command.OnUse([options, &context] { Create(*options, context); });
}

}  // namespace NoxAgent
