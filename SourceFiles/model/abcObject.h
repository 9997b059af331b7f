// Base of what the body view shows and the operator can select: a kind, a colour and three ways of being drawn.
#ifndef KORVEX2_ABCOBJECT_H
#define KORVEX2_ABCOBJECT_H

#include <QColor>

/// Kinds of scene object. The values are the first name on the selection name stack while the body is drawn for
/// picking, so they are fixed.
enum abcObjectType {
  ABC_MARKER = 1,
  ABC_LINE = 2,
};

/// A selectable object of the scene. `small` is everywhere the view's small-markers flag. The drawing operations need
/// a current OpenGL context and draw in loaded coordinates (millimetres).
class abcObject {
 public:
  explicit abcObject(abcObjectType type);
  abcObject(const abcObject&) = delete;
  abcObject& operator=(const abcObject&) = delete;

  // The order of the virtual operations is fixed.
  virtual ~abcObject() = 0;
  /// Draws the object as it looks when not selected; `colored` chooses the own colour where the kind heeds it.
  virtual void draw(bool small, bool colored) = 0;
  /// Draws the cage around a selected object in the colour that the caller has set.
  virtual void drawSelected(bool small) = 0;
  /// Draws the object's shape alone, with no change of colour or other state.
  virtual void drawForPicking(bool small) = 0;

  abcObjectType getType() const { return type_; }
  const QColor& getColor() const { return color_; }
  void setColor(const QColor& color) { color_ = color; }

 private:
  const abcObjectType type_;
  QColor color_;
};

#endif
