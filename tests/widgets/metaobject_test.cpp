// The entry widgets' interface as the toolkit and binary callers see it: signals, slots, properties, virtual order.
#include <gmock/gmock.h>

#include <QMetaMethod>
#include <QMetaProperty>

#include <cstddef>
#include <cstring>

#include "bodytable.h"
#include "bsColorButton.h"
#include "bsDoubleWidget.h"
#include "entryfixture.h"
#include "xyzWidget.h"

using testing::ElementsAre;

namespace {

/// Own methods of a class in the order of its meta object, each as "name(type parameter, ...)".
Log methodsOf(const QMetaObject& meta, QMetaMethod::MethodType type) {
  Log methods;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
    const QMetaMethod method = meta.method(i);
    if (method.methodType() != type) {
      continue;
    }
    std::string text = method.name().toStdString() + "(";
    for (int p = 0; p < method.parameterCount(); ++p) {
      const std::string name = method.parameterNames().at(p).toStdString();
      text += (p == 0 ? "" : ", ") + method.parameterTypes().at(p).toStdString() + (name.empty() ? "" : " ") + name;
    }
    methods.push_back(text + ")");
  }
  return methods;
}

Log propertiesOf(const QMetaObject& meta) {
  Log properties;
  for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
    const QMetaProperty property = meta.property(i);
    EXPECT_TRUE(property.isReadable() && property.isWritable()) << property.name();
    properties.push_back(std::string(property.typeName()) + " " + property.name());
  }
  return properties;
}

#if defined(__GXX_ABI_VERSION) && (defined(__x86_64__) || defined(__i386__))
/// Place of a virtual operation in its class's table: a pointer to it holds its offset there plus one.
template <typename Operation>
std::ptrdiff_t placeOf(Operation operation) {
  std::ptrdiff_t offset = 0;
  static_assert(sizeof operation >= sizeof offset);
  std::memcpy(&offset, &operation, sizeof offset);
  EXPECT_EQ(offset % 2, 1) << "not virtual";
  return (offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <typename... Operations>
void expectConsecutive(Operations... operations) {
  const std::vector<std::ptrdiff_t> places = {placeOf(operations)...};
  EXPECT_GT(places.front(), placeOf(&QWidget::hasHeightForWidth));
  for (std::size_t i = 0; i < places.size(); ++i) {
    EXPECT_EQ(places[i], places.front() + static_cast<std::ptrdiff_t>(i)) << "operation " << i;
  }
}

TEST(VirtualOrder, DoubleWidgetKeepsItsSlots) {
  using W = bsDoubleWidget;
  expectConsecutive(&W::languageChange, &W::value, &W::label, &W::setStep, &W::setWrapping, &W::setLabelColor,
                    &W::setRange, &W::showLabel, &W::setLabel, &W::setLabelFont, &W::setSuffix, &W::setDecimals,
                    &W::setValue, &W::adjustValue, &W::setMode, &W::setLabelPosition, &W::setWheelPosition,
                    &W::setWheelOrientation, &W::reset, &W::resetWheel, &W::spinChanged, &W::wheelChanged,
                    &W::setEditingBegin, &W::setEditingFinished, &W::setMouseEditingBegin, &W::setMouseEditingFinished);
}

TEST(VirtualOrder, XyzWidgetKeepsItsSlots) {
  using W = xyzWidget;
  expectConsecutive(&W::xValue, &W::yValue, &W::zValue, &W::xLabel, &W::yLabel, &W::zLabel, &W::getLayoutHorizontal,
                    &W::setSuffix, &W::setStep, &W::setMode, &W::showGroupBox, &W::setGroupTitle, &W::groupTitle,
                    &W::setValues, &W::adjustValues, &W::setXValue, &W::setYValue, &W::setZValue, &W::setLabels,
                    &W::setXLabel, &W::setYLabel, &W::setZLabel, &W::reset, &W::setLayoutHorizontal, &W::setXRange,
                    &W::setYRange, &W::setZRange, &W::setXWrapping, &W::setYWrapping, &W::setZWrapping);
}
#endif

}  // namespace

TEST(MetaObject, DoubleWidgetHasItsSignalsSlotsAndProperties) {
  const QMetaObject& meta = bsDoubleWidget::staticMetaObject;
  EXPECT_STREQ(meta.className(), "bsDoubleWidget");
  EXPECT_STREQ(meta.superClass()->className(), "QWidget");
  EXPECT_THAT(methodsOf(meta, QMetaMethod::Signal),
              ElementsAre("valueChanged(double value)", "editingFinished()", "editingBegin()"));
  EXPECT_THAT(methodsOf(meta, QMetaMethod::Slot),
              ElementsAre("setRange(double minimum, double maximum)", "showLabel(bool show)", "setLabel(QString label)",
                          "setLabelFont(QFont font)", "setSuffix(QString suffix)", "setDecimals(int decimals)",
                          "setValue(double value)", "adjustValue(double inc)", "setMode(bsDoubleMode mode)",
                          "setLabelPosition(bsDoublePosition position)", "setWheelPosition(bsDoublePosition position)",
                          "setWheelOrientation(bsDoubleOrientation orientation)", "reset()", "languageChange()",
                          "resetWheel()", "spinChanged(double inc)", "wheelChanged(double inc)", "setEditingBegin()",
                          "setEditingFinished()", "setMouseEditingBegin()", "setMouseEditingFinished()"));
  EXPECT_THAT(propertiesOf(meta), ElementsAre("double value", "QString label"));
}

TEST(MetaObject, XyzWidgetHasItsSignalsSlotsAndProperties) {
  const QMetaObject& meta = xyzWidget::staticMetaObject;
  EXPECT_STREQ(meta.className(), "xyzWidget");
  EXPECT_STREQ(meta.superClass()->className(), "QWidget");
  EXPECT_THAT(methodsOf(meta, QMetaMethod::Signal),
              ElementsAre("valueChanged(double x, double y, double z)", "xyzEditingBegin()", "xyzEditingFinished()"));
  EXPECT_THAT(methodsOf(meta, QMetaMethod::Slot),
              ElementsAre("setValues(double x, double y, double z)", "adjustValues(double x, double y, double z)",
                          "setXValue(double value)", "setYValue(double value)", "setZValue(double value)",
                          "setLabels(QString xLabel, QString yLabel, QString zLabel)", "setXLabel(QString label)",
                          "setYLabel(QString label)", "setZLabel(QString label)", "reset()",
                          "setLayoutHorizontal(bool horizontal)", "setXRange(double minimum, double maximum)",
                          "setYRange(double minimum, double maximum)", "setZRange(double minimum, double maximum)",
                          "setXWrapping(bool wrapping)", "setYWrapping(bool wrapping)", "setZWrapping(bool wrapping)",
                          "xyzChanged(double value)"));
  EXPECT_THAT(propertiesOf(meta),
              ElementsAre("double xValue", "double yValue", "double zValue", "QString xLabel", "QString yLabel",
                          "QString zLabel", "QString groupTitle", "bool horizontal"));
}

TEST(MetaObject, ColourButtonHasItsSignalAndSlots) {
  const QMetaObject& meta = bsColorButton::staticMetaObject;
  EXPECT_STREQ(meta.superClass()->className(), "QPushButton");
  EXPECT_THAT(methodsOf(meta, QMetaMethod::Signal), ElementsAre("colorChanged(QColor color)"));
  EXPECT_THAT(methodsOf(meta, QMetaMethod::Slot), ElementsAre("chooseColor()", "setColor(QColor color)"));
}

TEST(MetaObject, TablesTakeMousePressesAsASlot) {
  EXPECT_STREQ(QelTableWidget02::staticMetaObject.superClass()->className(), "QTableWidget");
  EXPECT_STREQ(BodyTable::staticMetaObject.superClass()->className(), "QWidget");
  for (const QMetaObject* const meta : {&QelTableWidget02::staticMetaObject, &BodyTable::staticMetaObject}) {
    EXPECT_THAT(methodsOf(*meta, QMetaMethod::Slot), ElementsAre("mousePressEvent(QMouseEvent* event)"));
  }
}

TEST(MetaObject, EnumerationSlotsCanBeInvokedByName) {
  bsDoubleWidget widget(nullptr, bsDoubleSpin, 0.0, 100.0, false);
  EXPECT_TRUE(QMetaObject::invokeMethod(&widget, "setMode", Q_ARG(bsDoubleMode, bsDoubleWheel)));
  EXPECT_TRUE(spinOf(&widget)->isHidden());
  EXPECT_TRUE(QMetaObject::invokeMethod(&widget, "setWheelOrientation", Qt::DirectConnection,
                                        Q_ARG(bsDoubleOrientation, bsDoubleVertical)));
  EXPECT_EQ(wheelOf(&widget)->orientation(), Qt::Vertical);
}
