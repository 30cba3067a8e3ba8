#include "RequestDecoding.h"

#include <AgentInterfacesV3/INoxObjectTable.h>
#include <AgentInterfacesV3/INoxObject_impl.h>

#include <exception>
#include <new>
#include <utility>

namespace Corvane::AgentInterfacesV3 {
namespace {

long AnswerFailure(const AMsgIn& request, const char* reason) {
  BaseSDK::AString text;
  try {
    text = BaseSDK::AString("%1::%2 failed: %3")
               .Arg(BaseSDK::AString::FromUtf8(request.Interface()),
                    BaseSDK::AString::FromUtf8(request.Operation()), reason);
  } catch (const std::bad_alloc&) {
    // The code says it without words.
  }
  request.Reply().SetError(AMsgError::OperationFailed, std::move(text));
  return -1;
}

}  // namespace

INoxObject_impl::INoxObject_impl() = default;
INoxObject_impl::~INoxObject_impl() = default;

long INoxObject_impl::ProcessRequest(const AMsgIn* request) {
  if (request == nullptr) {
    return -1;
  }
  try {
    return CallMethod(request);
  } catch (const std::exception& error) {
    return AnswerFailure(*request, error.what());
  } catch (...) {
    return AnswerFailure(*request, "unknown exception");
  }
}

long INoxObject_impl::CallMethod(const AMsgIn* request) {
  if (request->Interface() != INoxObjectTable.m_Name) {
    return RefuseInterface(*request);
  }
  return CallOperation<INoxObjectTable, &INoxObject_impl::ObjectDebugInfo,
                       &INoxObject_impl::NotifyObject>(*this, *request);
}

}  // namespace Corvane::AgentInterfacesV3
