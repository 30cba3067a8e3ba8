#include "agent/handler/run/OutputHeader.h"

#include <unistd.h>

#include <array>
#include <charconv>

namespace NoxHandler {

namespace {

constexpr std::string_view LineBegin = "-- ";
constexpr std::string_view LineEnd = " bytes of earlier output are not kept\n";

}  // namespace

OutputHeader OutputHeader::Parse(std::string_view bytes) {
  OutputHeader header;
  if (!bytes.starts_with(LineBegin)) {
    return header;
  }
  const std::string_view number = bytes.substr(LineBegin.size());
  const auto [end, error] =
      std::from_chars(number.data(), number.data() + number.size(), header.m_Dropped);
  const auto digits = static_cast<std::size_t>(end - number.data());
  if (error != std::errc() || !number.substr(digits).starts_with(LineEnd)) {
    return {};
  }
  header.m_Size = LineBegin.size() + digits + LineEnd.size();
  return header;
}

std::string OutputHeader::Line(std::uint64_t dropped) {
  return std::string(LineBegin) + std::to_string(dropped) + std::string(LineEnd);
}

OutputHeader OutputHeader::Of(int fd) {
  std::array<char, MaxBytes> bytes{};
  const ssize_t got = pread(fd, bytes.data(), bytes.size(), 0);
  return Parse({bytes.data(), got > 0 ? static_cast<std::size_t>(got) : 0});
}

}  // namespace NoxHandler
