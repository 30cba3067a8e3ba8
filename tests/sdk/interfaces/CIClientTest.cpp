#include "tests/sdk/interfaces/RawSlots.h"
#include "tests/support/FakeHandler.h"

#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <type_traits>

namespace {

using namespace Corvane::AgentInterfacesV3;
using Client = CIClient<INoxScheduledTaskHandler>;
using TestSupport::FakeHandler;

TEST(CIClient, ReleasesWhatItHoldsOnce) {
  FakeHandler handler;
  {
    const Client client(&handler);
    EXPECT_TRUE(client);
    EXPECT_EQ(client.Get(), &handler);
    EXPECT_EQ(handler.Releases(), 0U);
  }
  EXPECT_EQ(handler.Releases(), 1U);
}

TEST(CIClient, CallsTheInterface) {
  FakeHandler handler;
  const Client client(&handler);
  EXPECT_EQ(client->RunTasksEx("a:0:1:0;"), 1);
  ASSERT_EQ(handler.Batches().size(), 1U);
  EXPECT_EQ(handler.Batches()[0], "a:0:1:0;");
}

TEST(CIClient, ReleasesNothingWhenEmpty) {
  const Client client;
  EXPECT_FALSE(client);
  EXPECT_EQ(client.Get(), nullptr);
}

TEST(CIClient, HoldsWhatIsPutInItsSlot) {
  FakeHandler handler;
  {
    Client client;
    client.Slot() = static_cast<INoxScheduledTaskHandler*>(&handler);
    EXPECT_EQ(client.Get(), &handler);
  }
  EXPECT_EQ(handler.Releases(), 1U);
}

TEST(CIClient, IsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<Client>);
  EXPECT_FALSE(std::is_copy_assignable_v<Client>);
}

TEST(CIClient, SlotsAreTheDestructorAndTheDeletingDestructor) {
  EXPECT_EQ(sizeof(Client), 2 * sizeof(void*));
  FakeHandler handler;
  alignas(Client) std::byte storage[sizeof(Client)];
  RawSlots::Call<void>(new (storage) Client(&handler), 0);
  EXPECT_EQ(handler.Releases(), 1U);
  RawSlots::Call<void>(new Client(&handler), 1);
  EXPECT_EQ(handler.Releases(), 2U);
}

}  // namespace
