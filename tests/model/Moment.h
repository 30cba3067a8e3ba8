#pragma once

#include <string>

/// Moments as tables write them: "2005-03-01 08:00:30 -0500", wall clock and offset, so that the
/// two showings of a repeated hour differ; "-" is -1, and a plain number is seconds since the
/// epoch.
namespace Moment {

/// Reads without the C library's local time, which is what the tests are about. Fails the test when
/// `text` is none of the forms.
long At(const std::string& text);

/// As the zone in force shows it.
std::string Show(long moment);

}  // namespace Moment
