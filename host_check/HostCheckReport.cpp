#include "host_check/HostCheckReport.h"

#include <numeric>
#include <ostream>
#include <utility>

namespace host_check {
namespace {

std::ostream& operator<<(std::ostream& out, const HostCheckReport::Entry& entry) {
  return out << '[' << NameOf(entry.kind) << "] " << entry.text;
}

}  // namespace

void HostCheckReport::Begin(const HostCheckOptions& options) {
  *this = HostCheckReport();
  maxPerKind_ = options.maxPerKind;
  log_ = options.log;
  label_ = options.label;
}

void HostCheckReport::Tell(Entry entry) {
  if (log_ != nullptr) *log_ << label_ << entry << std::endl;
  told_.push_back(std::move(entry));
}

void HostCheckReport::AddNote(const std::string& text) {
  if (log_ != nullptr) *log_ << label_ << text << std::endl;
  notes_.push_back(text);
}

int HostCheckReport::Count() const { return std::accumulate(counts_.begin(), counts_.end(), 0); }

void HostCheckReport::Print(std::ostream& out, const std::string& label) const {
  for (int k = 0; k < kHostBreaches; ++k) {
    const auto kind = static_cast<HostBreach>(k);
    int nTold = 0;
    for (const Entry& entry : told_) {
      if (entry.kind != kind) continue;
      out << label << entry << '\n';
      ++nTold;
    }
    if (Count(kind) > nTold) {
      out << label << '[' << NameOf(kind) << "] " << Count(kind) - nTold << " more, " << Count(kind)
          << " in all\n";
    }
  }
  for (const std::string& note : notes_) out << label << note << '\n';
  out << label << "host data: " << Count() << (Count() == 1 ? " breach" : " breaches") << " found\n";
}

}  // namespace host_check
