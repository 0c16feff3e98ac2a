#include "sim/cSimWorld.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "sim/cSimRandom.h"

namespace {

struct cSegment {
  double x1, y1, x2, y2;
};

/// The room in millimetres, the sensor at 0/0 looking along x. A doorway ahead on the right leads
/// into a corridor that only a long range sensor sees the end of; the window on the left is open.
const cSegment ROOM[] = {
    {3900, 500, 3900, 3100},     {3900, -2600, 3900, -600},    // front wall, doorway in it
    {3900, 500, 42000, 500},     {3900, -600, 42000, -600},    // corridor
    {42000, 500, 42000, -600},                                 // its far end
    {3900, 3100, 1200, 3100},    {-300, 3100, -2800, 3100},    // left wall, window in it
    {3900, -2600, -2800, -2600}, {-2800, 3100, -2800, -2600},  // right wall, back wall
    {2600, 2300, 3500, 2300},    {2600, 2300, 2600, 3100},     // cupboard
    {3500, 2300, 3500, 3100},                                  //
    {1400, -1500, 2600, -1500},  {1400, -1500, 1400, -2300},   // table
    {2600, -1500, 2600, -2300},  {1400, -2300, 2600, -2300},   //
    {700, -1300, 1000, -1100},   {1000, -1100, 1100, -1400},   // chair
    {700, -1300, 800, -1600},                                  //
    {-1900, 1500, -2300, 1900},  {-1900, 1500, -1500, 1900},   // crate on its edge
    {-900, -1900, -1100, -1700}, {-900, -1900, -700, -1700},   // stand
    {-1100, -1700, -700, -1700},                               //
};

/// How far along the ray (dx, dy), of length 1, the segment is hit; infinity if it is not.
double hit(double dx, double dy, const cSegment& wall) {
  const double ex = wall.x2 - wall.x1;
  const double ey = wall.y2 - wall.y1;
  const double cross = dx * ey - dy * ex;
  const double far = std::numeric_limits<double>::infinity();
  if (std::abs(cross) < 1e-9) return far;
  const double range = (wall.x1 * ey - wall.y1 * ex) / cross;
  const double part = (wall.x1 * dy - wall.y1 * dx) / cross;
  return range > 0 && part >= 0 && part <= 1 ? range : far;
}

double hitRoom(double dx, double dy) {
  double range = std::numeric_limits<double>::infinity();
  for (const cSegment& wall : ROOM) range = std::min(range, hit(dx, dy, wall));
  return range;
}

constexpr double PI = 3.14159265358979323846;
constexpr double NOISE = 8;           // mm, one deviation near by
constexpr double NOISE_PART = 0.001;  // and what a millimetre of range adds to it
constexpr std::uint64_t MISS = 400;   // one reading in so many sees nothing, as on dark cloth

}  // namespace

cSimWorld::cSimWorld(const cSimModel& sensorModel, double scanRate, std::uint32_t worldSeed)
    : model(sensorModel), rate(scanRate), seed(cSimRandom(worldSeed).next()) {
  rays.reserve(static_cast<std::size_t>(model.perTurn));
  for (int step = 0; step < model.perTurn; ++step) {
    const double angle = 2 * PI * (step - model.front) / model.perTurn;
    const double x = std::cos(angle);
    const double y = std::sin(angle);
    rays.push_back({x, y, hitRoom(x, y)});
  }
}

cSimWorld::cPerson cSimWorld::personAt(std::uint32_t number) const {
  // An oval round the sensor at a walking pace: 14 s a round, the seed says where it begins.
  const double angle = 2 * PI * (number / rate / 14 + static_cast<double>(seed % 1000) / 1000);
  return {500 + 1500 * std::cos(angle), 400 + 1200 * std::sin(angle), 220};
}

void cSimWorld::seePerson(const cPerson& person, int first, std::vector<double>& ranges) const {
  const double square = person.x * person.x + person.y * person.y - person.radius * person.radius;
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    const cRay& ray = rays[static_cast<std::size_t>(first) + i];
    const double along = ray.x * person.x + ray.y * person.y;
    const double root = along * along - square;
    if (along > 0 && root >= 0) ranges[i] = std::min(ranges[i], along - std::sqrt(root));
  }
}

int cSimWorld::reading(double range, std::uint64_t noise) const {
  cSimRandom random(noise);
  const auto errors = static_cast<std::uint64_t>(model.errorLast - model.errorFirst) + 1;
  if (random.below(MISS) != 0 && range <= model.far) {
    const double seen = range + random.gaussian() * (NOISE + range * NOISE_PART);
    if (seen >= model.near && seen <= model.far) return static_cast<int>(seen);
  }
  return model.errorFirst + static_cast<int>(random.below(errors));
}

std::vector<int> cSimWorld::scan(std::uint32_t number, int first, int last, int cluster,
                                 int most) const {
  if (first < 0 || last < first || last >= model.perTurn)
    throw std::out_of_range("cSimWorld: a scan needs 0 <= first <= last < steps per turn");
  const auto count = static_cast<std::size_t>(last - first) + 1;
  const auto group = static_cast<std::size_t>(std::max(cluster, 1));
  std::vector<double> ranges(count);
  for (std::size_t i = 0; i < count; ++i)
    ranges[i] = rays[static_cast<std::size_t>(first) + i].range;
  seePerson(personAt(number), first, ranges);

  const std::uint64_t scanSeed = cSimRandom(seed + number).next();
  std::vector<int> readings;
  readings.reserve(count / group + 1);
  for (std::size_t i = 0; i < count; ++i) {
    const int value =
        std::min(reading(ranges[i], scanSeed + static_cast<std::size_t>(first) + i), most);
    if (i % group == 0) readings.push_back(value);
    int& kept = readings.back();
    const bool valid = value >= model.near;
    if (valid == (kept >= model.near))
      kept = std::min(kept, value);
    else if (valid)
      kept = value;
  }
  return readings;
}
