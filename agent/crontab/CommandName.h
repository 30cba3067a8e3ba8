#pragma once

#include <string>
#include <string_view>

namespace NoxAgent {

/// What people would call a line for the shell: the program or the script that it is about, without
/// its directory. `cd / && nice -n 5 /usr/local/bin/backup --full` is "backup", and
/// `[ -x /usr/bin/foo ] && sh /opt/foo.sh` is "foo.sh". Empty when nothing is found; the name may
/// hold any character.
std::string NameOfCommand(std::string_view line);

}  // namespace NoxAgent
