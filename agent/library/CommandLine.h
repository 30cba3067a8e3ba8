#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class Option;
}

namespace NoxAgent {

/// The command line cannot be read. The message tells why, and which --help explains it.
class CommandLineError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command line of a program, or of one of its commands: what may stand there and where it
/// goes. Describe it, then parse.
///
///     CommandLine line("noxctl", "Client of the Nox agent.");
///     CommandLine& add = line.Command("add", "Add a task");
///     add.Argument("FILE", file, "task document").Required();
///     add.Option("--id", id, "the task's ID").Takes("ID");
///     add.OnUse([&] { Add(file, id); });
///     if (!line.Parse(arguments, std::cout)) return 0;  // --help or --version was all
///
/// The variables that values are written to must outlive the parse. A library does the work, in one
/// source file; this header is light, because many files include it. One thread at a time.
class CommandLine {
 public:
  /// What else is to hold for one option or argument; the calls can be chained.
  class Value {
   public:
    explicit Value(CLI::Option& option) : m_Option(option) {}

    /// It must be given.
    Value& Required();
    /// What it takes, as --help shows it: "FILE".
    Value& Takes(const char* name);
    /// `check` returns why a text is refused, or an empty text.
    Value& Check(std::function<std::string(const std::string&)> check);
    /// A number outside of this range is refused; both ends are in it.
    Value& Between(long least, long most);

   private:
    CLI::Option& m_Option;
  };

  CommandLine(const std::string& name, const std::string& summary);
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;
  ~CommandLine();

  /// Adds a command. A line with commands needs one of them; options of the line may stand behind
  /// it. The command belongs to the line.
  CommandLine& Command(const std::string& name, const std::string& summary);
  /// Has Parse call `action` when this line or command is used; what `action` throws comes out of
  /// Parse.
  void OnUse(std::function<void()> action);
  /// Puts text below the help of this line, and of the commands that are added from now on.
  void Footer(const std::string& text);
  /// Puts text between the options and the footer of this command's help. What is added first
  /// comes last.
  void Explain(const std::string& text);
  /// What --version answers.
  void Version(const std::string& text);

  /// `name` is one or more names with commas between them: "-n,--count".
  Value Option(const std::string& name, std::string& value, const std::string& help);
  Value Option(const std::string& name, long& value, const std::string& help);
  Value Option(const std::string& name, unsigned& value, const std::string& help);
  Value Option(const std::string& name, std::optional<long>& value, const std::string& help);
  /// May be given several times.
  Value Option(const std::string& name, std::vector<std::string>& values, const std::string& help);
  /// Becomes true when it is given.
  void Flag(const std::string& name, bool& value, const std::string& help);

  // Arguments stand by themselves, in the order in which they are added here.

  Value Argument(const std::string& name, std::string& value, const std::string& help);
  Value Argument(const std::string& name, long& value, const std::string& help);
  Value Argument(const std::string& name, std::optional<long>& value, const std::string& help);
  /// Takes all arguments that are left.
  Value Argument(const std::string& name, std::vector<std::string>& values,
                 const std::string& help);

  /// Takes all words behind "--", whatever they look like. Only a command may have one.
  void Tail(const std::string& name, std::vector<std::string>& values, const std::string& help);

  // What may stand on the line, for programs that help people to write one.

  struct OptionForm {
    std::vector<std::string> m_Names;  ///< "-n", "--count"
    std::string m_Takes;               ///< what Takes said; empty for a flag
  };
  struct ArgumentForm {
    std::string m_Name;
    bool m_IsMany = false;  ///< it takes all that are left
  };

  /// In the order in which they were added.
  std::vector<std::string> Commands() const;
  /// Null when there is no command of the name.
  const CommandLine* FindCommand(const std::string& name) const;
  /// --help and --version included; of a command, its own alone.
  std::vector<OptionForm> Options() const;
  std::vector<ArgumentForm> Arguments() const;
  bool HasTail() const;

  /// Reads the words behind the program's name. False when they asked for --help or --version,
  /// which is on `out` then. CommandLineError when they cannot be read.
  bool Parse(const std::vector<std::string>& words, std::ostream& out);

 private:
  struct Impl;
  explicit CommandLine(std::unique_ptr<Impl> impl);

  std::vector<std::string> WithoutTail(const std::vector<std::string>& words);

  std::unique_ptr<Impl> m_Impl;
};

}  // namespace NoxAgent
