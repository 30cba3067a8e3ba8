#include "tests/sdk/interfaces/InterfacesPage.h"

#include <fstream>
#include <iostream>
#include <iterator>

int main(int argc, char** argv) {
  std::ifstream file(argc == 2 ? argv[1] : "");
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  const std::string updated = InterfacesPage::Updated(page);
  if (updated.empty()) {
    std::cerr << "usage: interfaces_page PAGE, a page that has the markers\n";
    return 1;
  }
  std::cout << updated;
  return 0;
}
