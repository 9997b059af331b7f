// A line between two markers of a body, drawn as a bar of square cross-section.
#ifndef KORVEX2_ABCLINE_H
#define KORVEX2_ABCLINE_H

#include "abcObject.h"
#include "bsFrame.h"

class abcMarker;

/// A visual link from the first to the second marker, grey unless recoloured. It refers to its markers and owns
/// neither; whoever owns them keeps them alive as long as the line is drawn.
class abcLine : public abcObject {
 public:
  abcLine(abcMarker* first, abcMarker* second);
  ~abcLine() override = default;

  abcMarker* getFirst() const { return first_; }
  abcMarker* getSecond() const { return second_; }

  /// Whether the line joins exactly these two markers, in either direction. The very objects are compared, not their
  /// positions or ids.
  bool equal(const abcMarker* a, const abcMarker* b) const;
  bool equal(const abcLine& other) const;

  /// A bar in the line's own colour, whatever `colored` says.
  void draw(bool small, bool colored) override;
  /// A wire cage somewhat wider than the bar, in the caller's colour. Lighting is on afterwards.
  void drawSelected(bool small) override;
  void drawForPicking(bool small) override;

 private:
  /// The bar, `scale` times as wide as the width in force.
  void drawBar(bool small, double scale) const;

  abcMarker* first_;
  abcMarker* second_;
  /// Modelling transform under which the bar is drawn.
  bsFrame frame_;
  /// Widths in millimetres: normally, and while the view shows small markers.
  double wideWidth_ = 6.0;
  double thinWidth_ = 1.5;
};

#endif
