#include "tests/sdk/interfaces/InterfacesPage.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

TEST(InterfacesPage, DocumentationSaysWhatTheTablesSay) {
  std::ifstream file(NOX_INTERFACES_PAGE);
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  ASSERT_FALSE(page.empty()) << NOX_INTERFACES_PAGE;
  EXPECT_EQ(page, InterfacesPage::Updated(page))
      << "bring it up to date: bin/interfaces_page docs/interfaces.md";
}

TEST(InterfacesPage, KeepsWhatStandsAroundTheGeneratedPart) {
  const std::string page = "before\n" + InterfacesPage::Generated() + "after\n";
  EXPECT_EQ(InterfacesPage::Updated(page), page);
}

TEST(InterfacesPage, APageWithoutMarkersIsNotUpdated) {
  EXPECT_EQ(InterfacesPage::Updated("no markers\n"), "");
}

}  // namespace
