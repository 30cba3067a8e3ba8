// docs/json.md against what the commands print: the examples have the members that the answers
// have, of the same types.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace NoxAgentTest {

namespace {

constexpr const char* EveryDay =
    "<Trigger Type=\"1\"><BeginDate>2026/06/01 08:00:00</BeginDate></Trigger>";

// A text, or the lines of one, as JSON.
Json Parsed(const std::string& text) {
  try {
    return Json::Parse(text);
  } catch (const NoxAgent::JsonError&) {
    Json lines = Json::List{};
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
      lines.Append(Json::Parse(line));
    }
    return lines;
  }
}

/// The examples of the page: below each heading the first block that is indented.
std::map<std::string, Json> ExamplesOfThePage() {
  std::ifstream page(NOX_JSON_PAGE);
  std::map<std::string, std::string> texts;
  std::string heading;
  bool isOver = true;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("## ", 0) == 0) {
      heading = line.substr(3);
      isOver = false;
    } else if (line.rfind("    ", 0) == 0 && !isOver) {
      texts[heading] += line.substr(4) + "\n";
    } else if (texts.count(heading) > 0) {
      isOver = true;
    }
  }
  std::map<std::string, Json> examples;
  for (const auto& [name, text] : texts) {
    examples[name] = Parsed(text);
  }
  return examples;
}

std::string KindOf(const Json& value) {
  return value.IsText()     ? "text"
         : value.IsWhole()  ? "number"
         : value.IsBool()   ? "truth"
         : value.IsList()   ? "list"
         : value.IsObject() ? "object"
                            : "null";
}

void ExpectForm(const Json& example, const Json& answer, const std::string& path);

// The example that an item is held against: that of its event where events differ, else the first.
const Json& ExampleFor(const Json& item, const Json::List& examples) {
  for (const Json& example : examples) {
    if (item.IsObject() && item.Has("event") && item.At("event") == example.At("event")) {
      return example;
    }
  }
  return examples.front();
}

void ExpectMembers(const Json& example, const Json& answer, const std::string& path) {
  for (const auto& [name, value] : answer.Members()) {
    if (example.Has(name)) {
      ExpectForm(example.At(name), value, path + "." + name);
    } else {
      ADD_FAILURE() << "the page does not have " << path << "." << name;
    }
  }
  for (const auto& [name, value] : example.Members()) {
    EXPECT_TRUE(answer.Has(name)) << "only the page has " << path << "." << name;
  }
}

// Null stands for any value that is not there.
void ExpectForm(const Json& example, const Json& answer, const std::string& path) {
  if (example.IsNull() || answer.IsNull()) {
    return;
  }
  ASSERT_EQ(KindOf(example), KindOf(answer)) << path;
  if (answer.IsObject()) {
    ExpectMembers(example, answer, path);
  }
  if (answer.IsList() && !answer.Items().empty()) {
    ASSERT_FALSE(example.Items().empty()) << path;
    for (const Json& item : answer.Items()) {
      ExpectForm(ExampleFor(item, example.Items()), item, path + "[]");
    }
  }
}

class JsonPage : public Client {
 protected:
  JsonPage() {
    m_Agent.SetStatus({{"nextReading", Now + 1200}, {"zone", "EST5EDT,M3.2.0,M11.1.0"}});
    SetTask("Failed");
  }

  void SetTask(const std::string& state) {
    m_Agent.SetTask("backup",
                    {TaskXml(EveryDay, "2026-06-15 08:00:00 " + state),
                     true,
                     {{"t0", "backup"}, {"t3", "1781524800"}, {"t5", "1"}, {"t6", "1781611200"}},
                     {{"state", "ended"},
                      {"start", "1781524800"},
                      {"end", "1781524802"},
                      {"result", "Failed"},
                      {"reason", "exit status 1 after 2.3 s"}},
                     {"one\n"}});
  }

  /// What is printed is held against the example of that name.
  void Expect(const std::string& name, const std::vector<std::string>& arguments,
              const std::string& input = {}) {
    std::vector<std::string> words = arguments;
    words.emplace_back("--json");
    (void)Run(words, input);
    ExpectText(name, Out());
  }

  void ExpectText(const std::string& name, const std::string& text) {
    ASSERT_TRUE(m_Examples.count(name)) << "the page has no example of " << name;
    ExpectForm(m_Examples.at(name), Parsed(text), name);
    m_Seen.insert(name);
  }

  const std::map<std::string, Json> m_Examples = ExamplesOfThePage();
  std::set<std::string> m_Seen;
};

}  // namespace

TEST_F(JsonPage, HasTheFormOfEveryAnswer) {
  Expect("add", {"add", "-"}, TaskXml(EveryDay));
  Expect("add, with several files", {"add", FileWith(TaskXml(EveryDay)), "-"}, TaskXml(EveryDay));
  (void)Run({"create", "new", "daily at 02:30", "--json", "--", "/bin/true"});
  ExpectText("create", Out());
  Expect("import", {"import", "crontab", "-", "--dry-run"},
         "MAILTO=a\n30 2 * * * /bin/true\n@reboot x\n");
  Expect("describe", {"describe", "new"});
  Expect("list", {"list"});
  Expect("show", {"show", "backup"});
  Expect("attributes", {"attributes", "backup"});
  Expect("next", {"next", "backup", "-n", "2"});
  Expect("explain", {"explain", "backup"});
  Expect("explain", {"explain", "backup", "--at", "2026-06-16 08:00"});
  Expect("set-state", {"set-state", "backup", "Failed"});
  Expect("enable", {"enable", "backup"});
  Expect("disable", {"disable", "backup", "--for", "2h"});
  Expect("list", {"list"});
  Expect("describe", {"describe", "backup"});
  Expect("disable", {"disable", "backup"});
  Expect("refresh", {"refresh"});
  m_Agent.SetFiles({{"refused", Json::List{Json{{"name", "backup.vsk"},
                                                {"reason", "empty"},
                                                {"line", 1},
                                                {"column", 1},
                                                {"time", Now},
                                                {"mended", false}}}},
                    {"strays", Json::List{Json{{"name", "a"}, {"reason", "b"}}}}});
  Expect("files", {"files"});
  Expect("notify", {"notify", "10", "300"});
  Expect("check", {"check", "-"}, TaskXml(WarnedTrigger));
  Expect("check-job", {"check-job", "-"});
  Expect("simulate", {"simulate", FileWith(TaskXml(EveryDay)), "--from", "2026-06-15", "--to",
                      "2026-06-16", "--gate-closed", "2026-06-15 03:00..2026-06-15 04:00",
                      "--clock-step", "2026-06-15 05:00=+60", "--run-time", "7200"});
  Expect("log", {"log", "backup"});
  m_Agent.SetRunByHand({{"state", "running"},
                        {"number", "1"},
                        {"runs", "1"},
                        {"start", "1781524801"},
                        {"pid", "77"}});
  Expect("run", {"run", "backup"});
  Expect("stop", {"stop", "backup"});
  Expect("delete", {"delete", "backup"});
  (void)Run({"show", "none", "--json"});
  ExpectText("Errors", Err());
  m_Agent.SetFiles({{"strays", Json::List{Json{{"name", "a b.vsk"}, {"reason", "a blank"}}}}});
  (void)Run({"list", "--json"});
  ExpectText("Warnings", Err());

  SetTask("Ok");
  m_Agent.SetSteps({{{}, R"({"code":102,"id":"other"})", 0},
                    {[this](FakeAgent&) { SetTask("Failed"); }, R"({"code":100,"id":"backup"})", 2},
                    {{}, R"({"code":101,"id":"other"})", 0}});
  Expect("watch", {"watch"});

  for (const auto& [name, example] : m_Examples) {
    EXPECT_TRUE(m_Seen.count(name)) << "nothing is held against the example of " << name;
  }
}

}  // namespace NoxAgentTest
