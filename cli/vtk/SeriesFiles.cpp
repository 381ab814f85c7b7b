#include "cli/vtk/SeriesFiles.h"

#include <utility>

#include "cli/vtk/PvdFile.h"

namespace zyngrad {

SeriesFiles::SeriesFiles(Ranks const& ranks, std::string name, std::string extension,
                         std::vector<std::string> times)
    : ranks_(ranks), name_(std::move(name)), extension_(std::move(extension)), times_(std::move(times)) {}

PieceFiles SeriesFiles::At(std::size_t time) const {
  return {ranks_, IsSeries() ? name_ + '_' + times_[time] : name_, extension_};
}

std::string SeriesFiles::Index() const { return IsSeries() ? name_ + ".pvd" : At(0).Index(); }

std::vector<std::string> SeriesFiles::All() const {
  std::vector<std::string> all;
  for (std::size_t t = 0; t < times_.size(); ++t)
    for (std::string const& file : At(t).All()) all.push_back(file);
  if (IsSeries()) all.push_back(Index());
  return all;
}

void SeriesFiles::WriteIndex(std::string const& file) const {
  std::vector<std::string> grids;
  for (std::size_t t = 0; t < times_.size(); ++t) grids.push_back(At(t).Index());
  WritePvd(file, times_, grids);
}

}  // namespace zyngrad
