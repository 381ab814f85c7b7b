#include "host_check/HostCheckReport.h"

#include <numeric>
#include <ostream>
#include <utility>

namespace host_check {
namespace {

std::ostream& operator<<(std::ostream& out, HostCheckReport::Entry const& entry) {
  return out << '[' << NameOf(entry.kind) << "] " << entry.text;
}

}  // namespace

void HostCheckReport::Begin(HostCheckOptions const& options) {
  *this = HostCheckReport();
  maxPerKind_ = options.maxPerKind;
  log_ = options.log;
  label_ = options.label;
}

void HostCheckReport::Tell(Entry entry) {
  if (log_ != nullptr) *log_ << label_ << entry << std::endl;
  told_.push_back(std::move(entry));
}

void HostCheckReport::AddNote(std::string const& text) {
  if (log_ != nullptr) *log_ << label_ << text << std::endl;
  notes_.push_back(text);
}

int HostCheckReport::Count() const { return std::accumulate(counts_.begin(), counts_.end(), 0); }

void HostCheckReport::Print(std::ostream& out, std::string const& label) const {
  for (int k = 0; k < kHostBreaches; ++k) {
    auto const kind = static_cast<HostBreach>(k);
    int nTold = 0;
    for (Entry const& entry : told_) {
      if (entry.kind != kind) continue;
      out << label << entry << '\n';
      ++nTold;
    }
    if (Count(kind) > nTold) {
      out << label << '[' << NameOf(kind) << "] " << Count(kind) - nTold << " more, " << Count(kind)
          << " in all\n";
    }
  }
  for (std::string const& note : notes_) out << label << note << '\n';
  out << label << "host data: " << Count() << (Count() == 1 ? " breach" : " breaches") << " found\n";
}

}  // namespace host_check
