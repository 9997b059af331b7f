// The canvas's signals and slots as the toolkit sees them, and the values of the shared enumerations.
#include <gtest/gtest.h>

#include <QMetaMethod>

#include <string>
#include <vector>

#include "abcaxis.h"
#include "glcanvas.h"

namespace {

std::vector<std::string> signatures(QMetaMethod::MethodType kind) {
  const QMetaObject& meta = GLCanvas::staticMetaObject;
  std::vector<std::string> found;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    if (meta.method(i).methodType() == kind) {
      found.push_back(meta.method(i).methodSignature().toStdString());
    }
  }
  return found;
}

std::vector<std::string> parameterNames(const char* signature) {
  const QMetaObject& meta = GLCanvas::staticMetaObject;
  const int index = meta.indexOfMethod(signature);
  EXPECT_GE(index, 0) << signature;
  std::vector<std::string> names;
  for (const QByteArray& name : meta.method(index).parameterNames()) {
    names.push_back(name.toStdString());
  }
  return names;
}

}  // namespace

TEST(CanvasInterface, DerivesFromTheOpenGLWidget) {
  EXPECT_STREQ(GLCanvas::staticMetaObject.superClass()->className(), "QGLWidget");
}

TEST(CanvasInterface, DeclaresItsSignalsInTheFixedOrder) {
  const std::vector<std::string> expected = {"translateViewRequest(double,double,double)",
                                             "rotateViewRequest(double,double,double)",
                                             "storeViewRequest()",
                                             "bodyModified(bool)",
                                             "storeBodyRequest()",
                                             "canUndo(bool)",
                                             "canRedo(bool)",
                                             "canSetOriginToMarker(bool)",
                                             "canSetAxisToMarkers(bool)",
                                             "canSetParallelAxes(bool)",
                                             "body_change(bool)",
                                             "is_online(bool)",
                                             "canIntroduceLine(bool)",
                                             "canDeleteLine(bool)",
                                             "canDeleteMarker()"};
  EXPECT_EQ(signatures(QMetaMethod::Signal), expected);
}

TEST(CanvasInterface, DeclaresItsSlotsInTheFixedOrder) {
  const std::vector<std::string> expected = {"saveCurrentView()",
                                             "rotateView(double,double,double)",
                                             "setViewOrientation(bsMatrix)",
                                             "translateView(double,double,double)",
                                             "setViewPosition(bsVector)",
                                             "transformView(bsMatrix)",
                                             "showCOG(bool)",
                                             "showSmallMarkers(bool)",
                                             "showColoredMarkers(bool)",
                                             "showLongAxes(bool)",
                                             "setLongAxesFactor(double)",
                                             "showXYGrid(bool)",
                                             "showYZGrid(bool)",
                                             "showXZGrid(bool)",
                                             "setXYGridColor(QColor&)",
                                             "setYZGridColor(QColor&)",
                                             "setXZGridColor(QColor&)",
                                             "rotateViewBegin()",
                                             "rotateViewEnd()",
                                             "showMarkerEmissions(bool)",
                                             "undo()",
                                             "redo()",
                                             "rotateBody(double,double,double)",
                                             "rotateBody(bsMatrix)",
                                             "setBodyOrientation(bsMatrix)",
                                             "setBodyPosition(bsVector)",
                                             "translateBody(double,double,double)",
                                             "saveCurrentBody()",
                                             "undoBody()",
                                             "redoBody()",
                                             "setOriginToMarker()",
                                             "setAxisToMarkers(abcAxis,abcAxis)",
                                             "setParallelAxes()",
                                             "set_origin_to_cog()",
                                             "introduceLine()",
                                             "deleteLine()"};
  EXPECT_EQ(signatures(QMetaMethod::Slot), expected);
}

TEST(CanvasInterface, NamesTheParametersOfItsSignals) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(parameterNames("translateViewRequest(double,double,double)"), (Names{"x", "y", "z"}));
  EXPECT_EQ(parameterNames("rotateViewRequest(double,double,double)"), (Names{"x", "y", "z"}));
  EXPECT_EQ(parameterNames("bodyModified(bool)"), Names{"bodyModified"});
  EXPECT_EQ(parameterNames("canUndo(bool)"), Names{"enableUndo"});
  EXPECT_EQ(parameterNames("canRedo(bool)"), Names{"enableRedo"});
  EXPECT_EQ(parameterNames("canSetOriginToMarker(bool)"), Names{"enableSetOriginToMarker"});
  EXPECT_EQ(parameterNames("canSetAxisToMarkers(bool)"), Names{"enableSetAxisToMarkers"});
  EXPECT_EQ(parameterNames("canSetParallelAxes(bool)"), Names{"enableSetParallelAxes"});
  EXPECT_EQ(parameterNames("body_change(bool)"), Names{"can_apply"});
  EXPECT_EQ(parameterNames("is_online(bool)"), Names{"online"});
  EXPECT_EQ(parameterNames("canIntroduceLine(bool)"), Names{"enableIntroduceLine"});
  EXPECT_EQ(parameterNames("canDeleteLine(bool)"), Names{"enableDeleteLine"});
}

TEST(CanvasInterface, NamesTheParametersOfItsSlots) {
  using Names = std::vector<std::string>;
  EXPECT_EQ(parameterNames("setViewPosition(bsVector)"), Names{"position"});
  EXPECT_EQ(parameterNames("showCOG(bool)"), Names{"showCOG"});
  EXPECT_EQ(parameterNames("setLongAxesFactor(double)"), Names{"longAxesFactor"});
  EXPECT_EQ(parameterNames("showXYGrid(bool)"), Names{"showXY"});
  EXPECT_EQ(parameterNames("showYZGrid(bool)"), Names{"showYZ"});
  EXPECT_EQ(parameterNames("showXZGrid(bool)"), Names{"showXZ"});
  EXPECT_EQ(parameterNames("setXYGridColor(QColor&)"), Names{"XYColor"});
  EXPECT_EQ(parameterNames("showMarkerEmissions(bool)"), Names{"show_emissions"});
  EXPECT_EQ(parameterNames("setAxisToMarkers(abcAxis,abcAxis)"), (Names{"axisToSet", "axisToKeep"}));
}

TEST(CanvasInterface, EverySlotAndSignalIsPublic) {
  const QMetaObject& meta = GLCanvas::staticMetaObject;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    EXPECT_EQ(meta.method(i).access(), QMetaMethod::Public) << meta.method(i).methodSignature().constData();
  }
}

TEST(CanvasInterface, EnumerationsHaveTheirFixedValues) {
  EXPECT_EQ(static_cast<int>(ABC_AXIS_X), 0);
  EXPECT_EQ(static_cast<int>(ABC_AXIS_Y), 1);
  EXPECT_EQ(static_cast<int>(ABC_AXIS_Z), 2);
  EXPECT_EQ(static_cast<int>(ABC_VIEW_IDLE), 0);
  EXPECT_EQ(static_cast<int>(ABC_VIEW_PAN), 1);
  EXPECT_EQ(static_cast<int>(ABC_VIEW_DOLLY), 2);
  EXPECT_EQ(static_cast<int>(ABC_VIEW_ROTATE), 3);
  EXPECT_EQ(static_cast<int>(ABC_MODIFY_BODY), 0);
}

TEST(CanvasInterface, AnAxisTravelsInAVariant) {
  EXPECT_EQ(QVariant::fromValue(ABC_AXIS_Z).value<abcAxis>(), ABC_AXIS_Z);
}
