// See geometryexchange.h.
#include "geometryexchange.h"

#include <algorithm>

#include "backendchannel.h"

namespace korvex2 {

namespace {
constexpr int mostMarkers = 1000;
}

bool readGeometry(BackendChannel& channel, const QByteArray& type, int number, std::vector<bsVector>& positions,
                  std::vector<Emission>& emissions) {
  int count = 0;
  if (!channel.numberOfMarkers(type, number, count)) {
    return false;
  }
  if (count == 0) {
    return false;
  }
  if (count > mostMarkers) {
    channel.reportMarkerInfoFailure();
    return false;
  }
  positions.clear();
  emissions.clear();
  for (int marker = 1; marker <= count; ++marker) {  // a negative count reads nothing and succeeds, kept on purpose
    bsVector position;
    if (!channel.markerPosition(type, number, marker, position)) {
      return false;
    }
    positions.push_back(position);
    Emission emission;
    if (!channel.markerEmission(type, number, marker, emission)) {
      return false;
    }
    emissions.push_back(emission);
  }
  return true;
}

bool haveEmissions(const std::vector<Emission>& emissions) {
  return std::any_of(emissions.begin(), emissions.end(), [](const Emission& emission) {
    return emission.x != 0.0 || emission.y != 0.0 || emission.z != 0.0 || emission.angle != 0.0;
  });
}

void writeGeometry(BackendChannel& channel, const QByteArray& type, int number, const std::vector<bsVector>& positions,
                   const std::vector<Emission>& emissions) {
  if (!channel.setNumberOfMarkers(type, number, static_cast<int>(positions.size()))) {
    return;
  }
  const bool withEmissions = channel.writesEmissions() && haveEmissions(emissions);
  for (std::size_t i = 0; i < positions.size(); ++i) {
    const int marker = static_cast<int>(i) + 1;
    channel.setMarkerPosition(type, number, marker, positions[i]);
    if (withEmissions && i < emissions.size()) {
      channel.setMarkerEmission(type, number, marker, emissions[i]);
    }
  }
}

bool isBodyCalibrated(BackendChannel& channel, const QByteArray& type, int number) {
  return channel.isBodyCalibrated(type, number);
}

}  // namespace korvex2
