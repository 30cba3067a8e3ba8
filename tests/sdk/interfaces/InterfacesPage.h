#pragma once

#include <string>

/// The part of docs/interfaces.md that the tables yield. Its first and last line are the markers
/// that enclose it on the page.
struct InterfacesPage {
  static std::string Generated();

  /// `page` with the generated part put in the place of the one it has. Empty when it has none.
  static std::string Updated(const std::string& page);
};
