#include "agent/handler/process/Account.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

using Lookup = std::function<int(passwd*, char*, std::size_t, passwd**)>;

// Nothing when there is no such user.
std::optional<Account> LookUp(const Lookup& lookup) {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  int error = 0;
  while ((error = lookup(&entry, buffer.data(), buffer.size(), &found)) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  if (found == nullptr) {
    return std::nullopt;
  }
  Account account;
  account.m_Name = entry.pw_name;
  account.m_Home = entry.pw_dir;
  account.m_Shell = entry.pw_shell;
  account.m_Uid = entry.pw_uid;
  account.m_Gid = entry.pw_gid;
  return account;
}

std::vector<gid_t> GroupsOf(const Account& account) {
  std::vector<gid_t> groups(16);
  int count = static_cast<int>(groups.size());
  while (getgrouplist(account.m_Name.c_str(), account.m_Gid, groups.data(), &count) < 0) {
    groups.resize(groups.size() * 2);
    count = static_cast<int>(groups.size());
  }
  groups.resize(static_cast<std::size_t>(count));
  return groups;
}

Account Own() {
  auto account = LookUp([](passwd* entry, char* buffer, std::size_t size, passwd** found) {
    return getpwuid_r(geteuid(), entry, buffer, size, found);
  });
  if (!account) {
    account.emplace();  // also a user without an entry can run commands
    account->m_Uid = geteuid();
    account->m_Gid = getegid();
  }
  return *account;
}

}  // namespace

Account Account::Find(const std::string& user) {
  if (user.empty()) {
    return Own();
  }
  auto account = LookUp([&](passwd* entry, char* buffer, std::size_t size, passwd** found) {
    return getpwnam_r(user.c_str(), entry, buffer, size, found);
  });
  if (!account) {
    throw JobError(AString("there is no user \"%1\"").Arg(user.c_str()));
  }
  if (account->m_Uid == geteuid()) {
    return *account;
  }
  if (geteuid() != 0) {
    throw JobError(
        AString("only an agent that runs as root can run a command as \"%1\"").Arg(user.c_str()));
  }
  account->m_Groups = GroupsOf(*account);
  account->m_Switch = true;
  return *account;
}

}  // namespace NoxHandler
