#pragma once

#include <ctime>

namespace Nox {

/// What time() says, kept inside the signed 32-bit range.
long Now();

/// mktime: local time to seconds since the epoch; `fields` is normalised as mktime does it. -1 when
/// it fails or the moment lies outside the signed 32-bit range; -1 is also the moment one second
/// before the epoch, which callers treat as no time.
///
/// With tm_isdst below 0 the answer depends on the fields and the zone alone (that of mktime itself
/// depends on earlier calls): in New York 2024-11-03 01:30, shown twice, is the first of the two,
/// 1730611800; 2024-03-10 02:30, never shown, is 03:30 daylight time, 1710055800.
///
/// The host kit reads dates by the same rule with a function of its own (BaseSDK/ALong32.h), which
/// is no name of the host's and therefore not for a plug-in.
long MakeTime32(std::tm& fields);

}  // namespace Nox
