#include "agent/daemon/control/SchedulerReport.h"

namespace NoxAgent {
namespace {

constexpr std::string_view Heading = "Currently running tasks:\n";

}  // namespace

SchedulerReport::SchedulerReport(std::string_view report) : m_IsOne(report.starts_with(Heading)) {
  if (m_IsOne) {
    report.remove_prefix(Heading.size());
    while (report.starts_with(' ')) {
      const std::size_t end = report.find('\n');
      m_TaskIds.emplace_back(report.substr(1, end - 1));
      report.remove_prefix(end == std::string_view::npos ? report.size() : end + 1);
    }
    while (report.starts_with('\n')) {
      report.remove_prefix(1);
    }
  }
  m_Rest = report;
}

}  // namespace NoxAgent
