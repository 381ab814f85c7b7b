#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"
#include "tests/support/watch/SettingsFolder.h"

// Set-ups one after the other on one operator, with other methods, points, marks and meshes: each gives what a new
// operator gives. A copy reads the tables until its source is set up again or destroyed.

namespace zyn_test::set_up_sequences_test {
namespace {

using Object = CZynIBRBFInternalObject;

struct Hosts {
  Hosts() {
    HexahedraOptions options;
    options.nx = options.ny = options.nz = 2;
    meshes = {Hexahedra(options), Hexahedra({})};
    for (std::size_t k = 0; k < hosts.size(); ++k)
      hosts[k] = std::make_unique<PointHost>(meshes[k], folder.BaseFileName());
  }

  SettingsFolder folder;
  std::array<TestMesh, 2> meshes;
  std::array<std::unique_ptr<PointHost>, 2> hosts;
};

/// Everything that decides about a set-up.
struct Choice {
  Choice(Random& random, Hosts const& hosts)
      : mesh(static_cast<std::size_t>(UniformInt(random, 0, 1))),
        byFile(UniformInt(random, 0, 3) == 0),
        marks(hosts.meshes[mesh].NCell(), kUnusable),
        points(RandomPoints(random)) {
    int const methods[] = {1, 2, 3, 3, 7};
    settings.method = methods[UniformInt(random, 0, 4)];
    settings.span = UniformInt(random, 20, 1000);
    settings.number = UniformInt(random, 1, UniformInt(random, 0, 9) == 0 ? 500 : 9);
    int const inner = hosts.meshes[mesh].nInnerCells;
    int const usable = UniformInt(random, 0, 5);  // of 5 cells; rarely none
    for (int c = 1; c <= inner; ++c)
      if (UniformInt(random, 1, 5) <= usable) marks[c] = kUsable;
  }

  static std::vector<Point> RandomPoints(Random& random) {
    std::vector<Point> points(static_cast<std::size_t>(UniformInt(random, 0, 12)));
    for (Point& p : points)
      p = {Uniform(random, -0.5, 3.5), Uniform(random, -0.5, 3.5), Uniform(random, -0.5, 3.5)};
    return points;
  }

  void SetUp(Hosts& hosts, PointParameters& parameters, Object& object) {
    PointBed::Connect(object, *hosts.hosts[mesh]);
    if (byFile && object.m_pKNCMP == nullptr) {
      hosts.folder.Write(Settings(settings));
    } else {
      parameters.block.Span = static_cast<int>(settings.span);
      parameters.block.iSearch_method = settings.method;
      parameters.block.Search_number = settings.number;
      object.SetZYNKNCMP(&parameters);
    }
    object.Initialize_IBInterpolateData(marks.Data(), points.Size(), points.x.Data(), points.y.Data(),
                                        points.z.Data());
  }

  std::string Text() const {
    return "method " + std::to_string(settings.method) + ", " + std::to_string(points.Size()) + " points; ";
  }

  std::size_t mesh;
  bool byFile;
  Array marks;
  PointArrays points;
  PointSettings settings;
};

/// The values of a field at all points.
std::vector<double> Applied(Object& object, int nCell) {
  Array phi(nCell), value(object.m_iNIBNode), dx(value), dy(value), dz(value);
  for (int c = 1; c <= nCell; ++c) phi[c] = 0.5 * c;
  object.Multiply_IBRBFCoefficent(phi.Data(), value.Data(), dx.Data(), dy.Data(), dz.Data());
  std::vector<double> values;
  for (int i = 1; i <= object.m_iNIBNode; ++i) values.push_back(value[i] + dx[i] + dy[i] + dz[i]);
  return values;
}

/// A copy that is never destroyed, as it shares its tables; the vectors are its own.
class Copy {
 public:
  explicit Copy(Object const& source) : object_(new (memory_) Object(source)) {}
  ~Copy() {
    object_->m_CellLocalID.Destroy();
    object_->m_NodeLocalID.Destroy();
    object_->m_bBoundaryNode.Destroy();
  }
  Copy(Copy const&) = delete;
  Copy& operator=(Copy const&) = delete;

  Object& operator*() { return *object_; }

 private:
  alignas(Object) unsigned char memory_[sizeof(Object)];
  Object* object_;
};

TEST(PointOperatorSequences, EverySetUpGivesWhatANewOperatorGives) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    Random random(seed);
    Hosts hosts;
    PointParameters parameters;
    Object object;
    std::string history;
    testing::internal::CaptureStdout();
    for (int step = 0; step < 7; ++step) {
      Choice choice(random, hosts);
      history += choice.Text();
      choice.SetUp(hosts, parameters, object);
      Object fresh;
      choice.SetUp(hosts, parameters, fresh);
      EXPECT_TRUE(SameContent(fresh, object)) << "seed " << seed << ": " << history;

      int const nCell = hosts.meshes[choice.mesh].NCell();
      std::vector<double> const expected = Applied(fresh, nCell);
      EXPECT_EQ(expected.size(), static_cast<std::size_t>(choice.points.Size()));
      Copy copy(object);
      std::vector<double> const actual = Applied(object, nCell), copied = Applied(*copy, nCell);
      for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(SameValue("value", expected[i], actual[i])) << history;
        EXPECT_TRUE(SameValue("value", expected[i], copied[i])) << history;
      }
    }
    testing::internal::GetCapturedStdout();
  }
}

}  // namespace
}  // namespace zyn_test::set_up_sequences_test
