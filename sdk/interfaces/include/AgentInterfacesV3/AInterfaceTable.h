#pragma once

#include <AgentInterfacesV3/AMsgValue.h>

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string_view>

namespace Corvane::AgentInterfacesV3 {

/// What an interface consists of: the single source for the decoding of requests in the skeletons,
/// their encoding in the proxies, their JSON form on the control socket, and the page
/// docs/interfaces.md. Tables are constants; each interface's stands in a header of its own
/// (INoxObjectTable.h and so on).
struct AInterfaceTable {
  /// In: from the caller to the object. Out: back to the caller, with the result. InOut: both.
  enum class ADirection { In, Out, InOut };

  /// One argument of an operation.
  struct AArgument {
    std::string_view m_Name;  ///< such as "taskId"; requests and their JSON form name it
    AMsgType m_Type;
    ADirection m_Direction;
    /// Whether a request may leave it out: a map that is handed over as a pointer is then null, any
    /// other argument is 0, false or empty. Never set for Out.
    bool m_Optional;

    constexpr bool IsIn() const { return m_Direction != ADirection::Out; }
    constexpr bool IsOut() const { return m_Direction != ADirection::In; }
  };

  /// One operation of an interface: its name, what it is for, and its arguments.
  class AOperation {
   public:
    /// No operation has more; one that needs more does not compile until this is raised.
    static constexpr std::size_t MaxArguments = 4;

    constexpr AOperation(std::string_view name, std::string_view summary,
                         std::initializer_list<AArgument> arguments)
        : m_Name(name), m_Summary(summary), m_Count(arguments.size()) {
      std::size_t index = 0;
      for (const AArgument& argument : arguments) {
        m_Arguments[index++] = argument;
      }
    }

    /// In the order of the C++ operation's parameters.
    constexpr std::span<const AArgument> Arguments() const { return {m_Arguments, m_Count}; }
    /// Null when there is no such argument.
    constexpr const AArgument* Find(std::string_view name) const {
      for (const AArgument& argument : Arguments()) {
        if (argument.m_Name == name) {
          return &argument;
        }
      }
      return nullptr;
    }

    std::string_view m_Name;
    std::string_view m_Summary;  ///< what it does and what its result says, in a sentence or two

   private:
    AArgument m_Arguments[MaxArguments]{};
    std::size_t m_Count;
  };

  std::string_view m_Name;          ///< such as "INoxObject"; requests name it
  const char* m_Identifier;         ///< the interface identifier, "{...}"
  const AInterfaceTable* m_Parent;  ///< what it derives from; null for INoxObject
  /// Its own operations in slot order, without those of the parent.
  std::span<const AOperation> m_Operations;

  /// Null when there is no such operation.
  constexpr const AOperation* FindOperation(std::string_view name) const {
    for (const AOperation& operation : m_Operations) {
      if (operation.m_Name == name) {
        return &operation;
      }
    }
    return nullptr;
  }

  /// Every interface, parents first.
  static std::span<const AInterfaceTable* const> All();
  /// Null when there is no such interface.
  static const AInterfaceTable* Find(std::string_view interfaceName);
};

}  // namespace Corvane::AgentInterfacesV3
