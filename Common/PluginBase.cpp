#include "Common/PluginBase.h"

#include "Common/Failure.h"
#include "Common/Log.h"

using BaseSDK::AString;

namespace {

/// Owned here, from PluginInitialize to an agreed PluginUninitialize. A plain pointer, because a
/// process that ends without unloading must not destroy an object whose threads still run.
APluginBase* serverObject = nullptr;

void LogRefusal(bool forced) {
  if (forced) {
    PLUGIN_LOG(Frame, Warning, L"PluginUninitialize(): Plugin failed forced unload!\n");
  } else {
    PLUGIN_LOG(Frame, Trace, L"PluginUninitialize(): Plugin refused to unload.\n");
  }
}

int UninitializeObject(bool forced) {
  const int result = serverObject->Uninitialize(forced ? 1 : 0);
  if (result < 1) {
    LogRefusal(forced);
    return result;
  }
  PLUGIN_LOG(Frame, Trace,
             L"PluginUninitialize(): Plugin agreed to unload - destroying server class.");
  delete serverObject;
  serverObject = nullptr;
  return result;
}

int InitializeObject(int queue) {
  serverObject = PluginMain();
  if (serverObject == nullptr) {
    PLUGIN_LOG(Frame, Error, L"PluginInitialize(): Failed to create server class\n");
    return -1;
  }
  // Kept on purpose: an object without a queue stays, uninitialised, and a second call answers 1.
  const int opened = serverObject->AMsgQueueServer::Open(queue);
  if (opened < 0) {
    return opened;
  }
  return serverObject->Initialize();
}

/// What `call` answers. An exception stays here, because the agent need not know of any; it
/// makes a failure of the call.
template <class Call>
int Answer(const wchar_t* function, Call call) {
  try {
    return call();
  } catch (...) {
    PLUGIN_LOG(Frame, Warning, AString(L"%1(): %2").Arg(function, Nox::FailureText()));
    return -1;
  }
}

}  // namespace

APluginBase::~APluginBase() = default;

int PluginInitialize(int queue) {
  if (serverObject != nullptr) {
    return 1;
  }
  return Answer(L"PluginInitialize", [queue] { return InitializeObject(queue); });
}

int PluginUninitialize(bool forced) {
  PLUGIN_LOG(Frame, Trace, L"PluginUninitialize(): enter.");
  const int result = serverObject == nullptr ? 1 : Answer(L"PluginUninitialize", [forced] {
    return UninitializeObject(forced);
  });
  PLUGIN_LOG(Frame, Trace, L"PluginUninitialize(): leave.");
  return result;
}

int PluginGetAttributeV3(const char* name, BaseSDK::AString& value) {
  if (serverObject == nullptr) {
    return -1;
  }
  return Answer(L"PluginGetAttributeV3", [&] { return serverObject->GetAttribute(name, value); });
}
