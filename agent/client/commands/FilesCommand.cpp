#include "agent/client/LocalTime.h"
#include "agent/client/TextTable.h"
#include "agent/client/commands/Commands.h"

#include <memory>

namespace NoxAgent {

namespace {

struct FilesOptions {
  std::vector<std::string> m_TakeBack;
  std::vector<std::string> m_Remove;
  std::vector<std::string> m_RemoveStrays;

  bool IsList() const { return m_TakeBack.empty() && m_Remove.empty() && m_RemoveStrays.empty(); }
};

std::string ReasonOf(const Json& refused) {
  if (refused.Bool("mended", false)) {
    return "nothing any more: take it back";
  }
  return "line " + refused.At("line").Dump() + ", column " + refused.At("column").Dump() + ": " +
         refused.Text("reason", "");
}

void ListFiles(const CommandContext& context) {
  const Json files = context.Agent().Files();
  if (context.m_Json) {
    return context.PrintJson(files);
  }
  TextTable table({"FILE", "WHERE", "SINCE", "WHAT IS WRONG"});
  for (const Json& refused : files.Items("refused")) {
    table.AddRow({refused.Text("name", ""), "refused", LocalTimeText(refused.Long("time", 0)),
                  ReasonOf(refused)});
  }
  for (const Json& stray : files.Items("strays")) {
    table.AddRow({stray.Text("name", ""), "tasks", "-", stray.Text("reason", "")});
  }
  table.Print(context.m_Out);
}

void Print(const Json& done, const CommandContext& context) {
  if (context.m_Json) {
    return context.PrintJson(done);
  }
  for (const auto& [what, names] : done.Members()) {
    for (const Json& name : names.Items()) {
      context.m_Out << what << ' ' << name.Text() << '\n';
    }
  }
}

void Change(const FilesOptions& options, const CommandContext& context) {
  AgentApi agent = context.Agent();
  Json done = Json::Object{};
  for (const std::string& name : options.m_TakeBack) {
    done["added"].Append(agent.TakeBackFile(name));
  }
  for (const std::string& name : options.m_Remove) {
    agent.RemoveFile(name, "refused");
    done["removed"].Append(name);
  }
  for (const std::string& name : options.m_RemoveStrays) {
    agent.RemoveFile(name, "tasks");
    done["removed"].Append(name);
  }
  Print(done, context);
}

}  // namespace

void AddFilesCommand(CommandLine& line, CommandContext& context) {
  CommandLine& files = line.Command(
      "files", "List files that are no tasks: refused ones, and others among the task files");
  const auto options = std::make_shared<FilesOptions>();
  files
      .Option("--take-back", options->m_TakeBack,
              "add a refused file, mended in its place, as a task again; several times")
      .Takes("NAME");
  files.Option("--remove", options->m_Remove, "delete a refused file; several times").Takes("NAME");
  files
      .Option("--remove-stray", options->m_RemoveStrays,
              "delete a file among the task files that is no task; several times")
      .Takes("NAME");
  files.OnUse([options, &context] {
    if (options->IsList()) {
      ListFiles(context);
    } else {
      Change(*options, context);
    }
  });
}

}  // namespace NoxAgent
