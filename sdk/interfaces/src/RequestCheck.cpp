#include "RequestCheck.h"

#include <BaseSDK/ALong32.h>

namespace Corvane::AgentInterfacesV3 {
namespace {

using AArgument = AInterfaceTable::AArgument;
using AOperation = AInterfaceTable::AOperation;
using BaseSDK::AString;

AString Quoted(std::string_view name) {
  return AString("\"") + AString::FromUtf8(name) + AString("\"");
}

AString FullName(const AMsgIn& request) {
  return AString::FromUtf8(request.Interface() + "::" + request.Operation());
}

bool Refuse(const AMsgIn& request, AMsgError code, const AString& text) {
  request.Reply().SetError(code, text);
  return false;
}

bool RefuseType(const AMsgIn& request, const AArgument& row, AMsgType given) {
  return Refuse(request, AMsgError::MistypedArgument,
                AString("Argument %1 of %2 must be a %3, not a %4.")
                    .Arg(Quoted(row.m_Name), FullName(request), NameOf(row.m_Type), NameOf(given)));
}

bool CheckArgument(const AMsgIn& request, const AArgument& row) {
  const AMsgValue* const given = request.Find(row.m_Name);
  if (given == nullptr) {
    return row.m_Optional ||
           Refuse(request, AMsgError::MissingArgument,
                  AString("%1 needs the argument %2, a %3.")
                      .Arg(FullName(request), Quoted(row.m_Name), NameOf(row.m_Type)));
  }
  if (TypeOf(*given) != row.m_Type) {
    return RefuseType(request, row, TypeOf(*given));
  }
  const long* const number = std::get_if<long>(given);
  return number == nullptr || BaseSDK::Clamp32(*number) == *number ||
         Refuse(request, AMsgError::MistypedArgument,
                AString("Argument %1 of %2 is outside the signed 32-bit range.")
                    .Arg(Quoted(row.m_Name), FullName(request)));
}

bool CheckNames(const AMsgIn& request, const AOperation& operation) {
  for (const auto& [name, value] : request.Arguments()) {
    const AArgument* const row = operation.Find(name);
    if (row == nullptr || !row->IsIn()) {
      return Refuse(request, AMsgError::UnexpectedArgument,
                    AString("%1 takes no argument %2.").Arg(FullName(request), Quoted(name)));
    }
  }
  return true;
}

bool CheckArguments(const AMsgIn& request, const AOperation& operation) {
  for (const AArgument& row : operation.Arguments()) {
    if (row.IsIn() && !CheckArgument(request, row)) {
      return false;
    }
  }
  return CheckNames(request, operation);
}

}  // namespace

const AOperation* CheckRequest(const AInterfaceTable& table, const AMsgIn& request) {
  const AOperation* const operation = table.FindOperation(request.Operation());
  if (operation == nullptr) {
    (void)Refuse(request, AMsgError::UnknownOperation,
                 AString("The interface %1 has no operation %2.")
                     .Arg(Quoted(request.Interface()), Quoted(request.Operation())));
    return nullptr;
  }
  return CheckArguments(request, *operation) ? operation : nullptr;
}

long RefuseInterface(const AMsgIn& request) {
  (void)Refuse(
      request, AMsgError::UnknownInterface,
      AString("The object does not serve the interface %1.").Arg(Quoted(request.Interface())));
  return -1;
}

}  // namespace Corvane::AgentInterfacesV3
