#include "tests/support/PluginLibrary.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TestSupport {

namespace {

void* Load(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    throw std::runtime_error(dlerror());
  }
  return handle;
}

template <class Function>
Function Resolve(void* handle, const char* name) {
  void* const symbol = dlsym(handle, name);
  if (symbol == nullptr) {
    throw std::runtime_error(std::string("no function ") + name);
  }
  return reinterpret_cast<Function>(symbol);
}

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <class T>
T At(const std::string& bytes, std::size_t offset) {
  T value{};
  if (offset + sizeof(T) > bytes.size()) {
    throw std::runtime_error("cut short");
  }
  std::memcpy(&value, bytes.data() + offset, sizeof(T));
  return value;
}

}  // namespace

PluginLibrary::PluginLibrary(const std::string& path)
    : m_Handle(Load(path)),
      m_Initialize(Resolve<int (*)(int)>(m_Handle, "PluginInitialize")),
      m_Uninitialize(Resolve<int (*)(bool)>(m_Handle, "PluginUninitialize")),
      m_GetAttribute(
          Resolve<int (*)(const char*, BaseSDK::AString&)>(m_Handle, "PluginGetAttributeV3")) {}

PluginLibrary::~PluginLibrary() {
  (void)dlclose(m_Handle);
}

INoxInterfaceFactory* PluginLibrary::Factory() const {
  BaseSDK::AString value;
  if (GetAttribute("InterfaceFactory", value) < 1) {
    return nullptr;
  }
  const unsigned long long address = std::stoull(value.ToUtf8(), nullptr, 16);
  return reinterpret_cast<INoxInterfaceFactory*>(static_cast<std::uintptr_t>(address));
}

std::vector<std::string> PluginLibrary::Exports(const std::string& path) {
  using Header = ElfW(Ehdr);
  using Section = ElfW(Shdr);
  using Symbol = ElfW(Sym);
  const std::string bytes = Bytes(path);
  const auto header = At<Header>(bytes, 0);
  const auto sectionAt = [&](std::size_t index) {
    return At<Section>(bytes, header.e_shoff + index * header.e_shentsize);
  };
  std::vector<std::string> names;
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    const Section table = sectionAt(i);
    if (table.sh_type != SHT_DYNSYM) {
      continue;
    }
    const Section strings = sectionAt(table.sh_link);
    for (std::size_t at = 0; at < table.sh_size; at += sizeof(Symbol)) {
      const auto symbol = At<Symbol>(bytes, table.sh_offset + at);
      if (symbol.st_shndx == SHN_UNDEF) {
        continue;
      }
      names.emplace_back(bytes.c_str() + strings.sh_offset + symbol.st_name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool PluginLibrary::IsMapped(const std::string& path) {
  return Bytes("/proc/self/maps").find(path) != std::string::npos;
}

}  // namespace TestSupport
