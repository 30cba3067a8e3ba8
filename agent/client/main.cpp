#include "agent/client/Client.h"

#include <iostream>

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  return NoxAgent::RunClient(arguments, std::cin, std::cout, std::cerr);
}
