// Marker records, markers and lines, as far as they are not drawn.
#include <gtest/gtest.h>

#include <QList>

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "abcLine.h"
#include "abcMarker.h"
#include "abcObject.h"
#include "abcmarkerdata.h"

namespace {

// The records pass between rooms and modules by value.
static_assert(std::is_copy_constructible_v<AbcMarkerData> && std::is_copy_assignable_v<AbcMarkerData>);
static_assert(std::is_aggregate_v<Emission> && sizeof(Emission) == 4 * sizeof(double));
static_assert(offsetof(Emission, x) == 0 && offsetof(Emission, y) == 8 && offsetof(Emission, z) == 16 &&
              offsetof(Emission, angle) == 24);
static_assert(std::is_abstract_v<abcObject> && std::has_virtual_destructor_v<abcObject>);
static_assert(std::is_base_of_v<abcObject, abcMarker> && std::is_base_of_v<abcObject, abcLine>);
static_assert(!std::is_copy_constructible_v<abcMarker> && !std::is_copy_constructible_v<abcLine>);

TEST(ObjectType, HasTheFixedValuesOfTheSelectionNames) {
  EXPECT_EQ(static_cast<int>(ABC_MARKER), 1);
  EXPECT_EQ(static_cast<int>(ABC_LINE), 2);
}

TEST(MarkerData, DefaultIsNoMarkerAtTheOriginWithBothRadiiAndNoEmission) {
  const AbcMarkerData data;
  EXPECT_EQ(data.id, 0xFFFFFFFFu);
  EXPECT_EQ(data.position, bsVector(0, 0, 0));
  EXPECT_EQ(data.radius, 10.0);
  EXPECT_EQ(data.small_radius, 3.0);
  EXPECT_EQ(data.emission_x, 0.0);
  EXPECT_EQ(data.emission_y, 0.0);
  EXPECT_EQ(data.emission_z, 0.0);
  EXPECT_EQ(data.opening_angle, 0.0);
}

TEST(MarkerData, TakesItsValuesInFieldOrder) {
  const AbcMarkerData data(7, bsVector(1, 2, 3), 4.0, 5.0, 6.0, 7.0, 8.0, 9.0);
  EXPECT_EQ(data.id, 7u);
  EXPECT_EQ(data.position, bsVector(1, 2, 3));
  EXPECT_EQ(data.radius, 4.0);
  EXPECT_EQ(data.small_radius, 5.0);
  EXPECT_EQ(data.emission_x, 6.0);
  EXPECT_EQ(data.emission_y, 7.0);
  EXPECT_EQ(data.emission_z, 8.0);
  EXPECT_EQ(data.opening_angle, 9.0);
}

TEST(MarkerData, KeepsItsFieldsInOrder) {
  const AbcMarkerData data;
  const void* const fields[] = {&data.id,         &data.position,   &data.radius,     &data.small_radius,
                                &data.emission_x, &data.emission_y, &data.emission_z, &data.opening_angle};
  for (std::size_t i = 1; i < std::size(fields); ++i) {
    EXPECT_LT(fields[i - 1], fields[i]) << "field " << i;
  }
}

TEST(MarkerData, IsStoredByValueInAList) {
  QList<AbcMarkerData> list;
  list.append(AbcMarkerData(7, bsVector(1, 2, 3), 4.0, 5.0, 6.0, 7.0, 8.0, 9.0));
  AbcMarkerData copy = list.first();
  copy.position = bsVector(0, 0, 0);
  EXPECT_EQ(list.first().position, bsVector(1, 2, 3));
  EXPECT_EQ(copy.opening_angle, 9.0);
}

TEST(EmissionRecord, DefaultIsNoEmission) {
  const Emission emission;
  EXPECT_EQ(emission.x, 0.0);
  EXPECT_EQ(emission.y, 0.0);
  EXPECT_EQ(emission.z, 0.0);
  EXPECT_EQ(emission.angle, 0.0);
  const std::vector<Emission> list{{1.0, 2.0, 3.0, 45.0}};
  EXPECT_EQ(list[0].z, 3.0);
  EXPECT_EQ(list[0].angle, 45.0);
}

TEST(Marker, IsWhiteWithDefaultRadiiAndNoEmission) {
  const abcMarker marker(3, bsVector(1, 2, 3));
  EXPECT_EQ(marker.getType(), ABC_MARKER);
  EXPECT_EQ(marker.getColor(), QColor(255, 255, 255, 255));
  EXPECT_EQ(marker.getId(), 3u);
  EXPECT_EQ(marker.getPosition(), bsVector(1, 2, 3));
  const AbcMarkerData& data = marker.getData();
  EXPECT_EQ(data.id, 3u);
  EXPECT_EQ(data.position, bsVector(1, 2, 3));
  EXPECT_EQ(data.radius, 10.0);
  EXPECT_EQ(data.small_radius, 3.0);
  EXPECT_EQ(data.emission_x, 0.0);
  EXPECT_EQ(data.emission_y, 0.0);
  EXPECT_EQ(data.emission_z, 0.0);
  EXPECT_EQ(data.opening_angle, 0.0);
}

TEST(Marker, StoresAnEmissionAsGiven) {
  abcMarker marker(0, bsVector(0, 0, 0));
  marker.setMarkerEmission(3.0, -4.0, 1e6, -720.0);
  EXPECT_EQ(marker.getData().emission_x, 3.0);
  EXPECT_EQ(marker.getData().emission_y, -4.0);
  EXPECT_EQ(marker.getData().emission_z, 1e6);
  EXPECT_EQ(marker.getData().opening_angle, -720.0);
}

TEST(Marker, TakesAColour) {
  abcMarker marker(0, bsVector(0, 0, 0));
  marker.setColor(QColor(1, 2, 3));
  EXPECT_EQ(marker.getColor(), QColor(1, 2, 3));
}

TEST(Line, IsGreyAndKnowsItsMarkers) {
  abcMarker a(0, bsVector(0, 0, 0));
  abcMarker b(1, bsVector(1, 0, 0));
  const abcLine line(&a, &b);
  EXPECT_EQ(line.getType(), ABC_LINE);
  EXPECT_EQ(line.getColor(), QColor(100, 100, 100, 255));
  EXPECT_EQ(line.getFirst(), &a);
  EXPECT_EQ(line.getSecond(), &b);
}

TEST(Line, EqualsItsMarkersInEitherDirectionAndNoOthers) {
  abcMarker a(0, bsVector(0, 0, 0));
  abcMarker b(1, bsVector(1, 0, 0));
  abcMarker c(2, bsVector(2, 0, 0));
  abcLine line(&a, &b);
  EXPECT_TRUE(line.equal(&a, &b));
  EXPECT_TRUE(line.equal(&b, &a));
  for (abcMarker* first : {&a, &b, &c}) {
    for (abcMarker* second : {&a, &b, &c}) {
      const bool joined = (first == &a && second == &b) || (first == &b && second == &a);
      EXPECT_EQ(line.equal(first, second), joined);
      EXPECT_EQ(line.equal(second, first), joined);
    }
  }
}

TEST(Line, ComparesMarkersByIdentityNotByPositionOrId) {
  abcMarker a(0, bsVector(0, 0, 0));
  abcMarker b(1, bsVector(1, 0, 0));
  abcMarker twinOfB(1, bsVector(1, 0, 0));
  const abcLine line(&a, &b);
  EXPECT_FALSE(line.equal(&a, &twinOfB));
}

TEST(Line, OfOneMarkerTwiceEqualsThatAndNothingElse) {
  abcMarker a(0, bsVector(0, 0, 0));
  abcMarker b(1, bsVector(1, 0, 0));
  const abcLine line(&a, &a);
  EXPECT_TRUE(line.equal(&a, &a));
  EXPECT_FALSE(line.equal(&a, &b));
  EXPECT_FALSE(line.equal(&b, &a));
  EXPECT_FALSE(line.equal(&b, &b));
}

TEST(Line, EqualsALineOfTheSameMarkers) {
  abcMarker a(0, bsVector(0, 0, 0));
  abcMarker b(1, bsVector(1, 0, 0));
  abcMarker c(2, bsVector(2, 0, 0));
  abcLine line(&a, &b);
  abcLine reversed(&b, &a);
  abcLine other(&a, &c);
  EXPECT_TRUE(line.equal(line));
  EXPECT_TRUE(line.equal(reversed));
  EXPECT_TRUE(reversed.equal(line));
  EXPECT_FALSE(line.equal(other));
  EXPECT_FALSE(other.equal(line));
}

TEST(Line, LeavesItsMarkersAloneWhenItGoes) {
  abcMarker a(4, bsVector(1, 2, 3));
  abcMarker b(5, bsVector(4, 5, 6));
  { const abcLine line(&a, &b); }
  EXPECT_EQ(a.getId(), 4u);
  EXPECT_EQ(b.getPosition(), bsVector(4, 5, 6));
}

std::string called;

class Recorder : public abcObject {
 public:
  Recorder() : abcObject(ABC_LINE) {}
  void draw(bool small, bool colored) override {
    called = std::string("draw") + (small ? "s" : "") + (colored ? "c" : "");
  }
  void drawSelected(bool small) override { called = std::string("drawSelected") + (small ? "s" : ""); }
  void drawForPicking(bool small) override { called = std::string("drawForPicking") + (small ? "s" : ""); }
};

TEST(Object, IsOpaqueWhiteAndOfTheKindItWasMadeWith) {
  const Recorder object;
  EXPECT_EQ(object.getColor(), QColor(255, 255, 255, 255));
  EXPECT_EQ(object.getType(), ABC_LINE);
}

#if defined(__x86_64__) && defined(__GNUC__)
// In this compiler's table of virtual functions the destructor takes two slots, and member functions take the object as
// their first argument.
TEST(Object, HasItsVirtualOperationsInOrderAfterTheDestructor) {
  Recorder object;
  abcObject* base = &object;
  void** table = nullptr;
  std::memcpy(&table, static_cast<void*>(base), sizeof table);
  const auto withTwo = [&](std::size_t slot, bool small, bool colored) {
    void (*function)(abcObject*, bool, bool) = nullptr;
    std::memcpy(&function, &table[slot], sizeof function);
    function(base, small, colored);
    return called;
  };
  EXPECT_EQ(withTwo(2, true, false), "draws");
  EXPECT_EQ(withTwo(2, false, true), "drawc");
  EXPECT_EQ(withTwo(3, true, false), "drawSelecteds");
  EXPECT_EQ(withTwo(4, true, false), "drawForPickings");
}
#endif

}  // namespace
