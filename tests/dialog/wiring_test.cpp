// What the dialog is made of: texts, shortcuts, help texts, menus, ranges, and who is connected to whom.
#include <qwt_wheel.h>
#include <QKeySequence>
#include <QMenu>
#include <QMessageBox>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTimer>

#include "bodytable.h"
#include "bsDoubleWidget.h"
#include "dialogtest.h"
#include "setaxisdialog.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Wiring : public DialogTest {
 protected:
  void SetUp() override { make(); }
  xyzWidget& group(const char* name) { return *find<xyzWidget>(name); }
  std::vector<double> values(const char* name) {
    return {group(name).xValue(), group(name).yValue(), group(name).zValue()};
  }
  /// Texts of a menu's entries, "|" for a separator, and what is checked or disabled.
  static std::vector<std::string> entries(const QMenu* menu) {
    std::vector<std::string> texts;
    for (const QAction* const action : menu->actions()) {
      texts.push_back(action->isSeparator() ? "|"
                                            : action->text().toStdString() +
                                                  (action->isCheckable() ? action->isChecked() ? " [x]" : " [ ]" : "") +
                                                  (action->isEnabled() ? "" : " (disabled)"));
    }
    return texts;
  }
  QMenu* menuWith(const QString& entry) {
    QAction* const action = menuEntry(entry);
    for (QMenu* const menu : dialog->findChildren<QMenu*>()) {
      if (menu->actions().contains(action)) {
        return menu;
      }
    }
    return nullptr;
  }
};

struct Texts {
  const char* object;
  const char* text;
  const char* shortcut;
  const char* help;
};

const Texts allTexts[] = {
    {"loadBody", "Bod&y", "", "Select body"},
    {"body_name", nullptr, "", "Select body (standard bodies, wandgrips)"},
    {"page_1", nullptr, "", "Graphic view of the current body"},
    {"page_2", nullptr, "", "Data view of the current body"},
    {"tabWidget", nullptr, "", "Body coordinate adjustment"},
    {"body_pos_xyzWidget", nullptr, "", "Change the body coordinate system in three directions"},
    {"body_ori_xyzWidget", nullptr, "", "Change the body coordinate system by rotating around three axes"},
    {"set_origin_button", "Set &origin", "Alt+O", "Set the chosen marker as the origin of the body coordinate system"},
    {"set_origin_cog_button", "S&et origin to COG", "Alt+E",
     "Set origin to Center Of Gravity of the body, without changing orientation"},
    {"set_axis_button", "Set a&xis", "Alt+X",
     "Set the two chosen markers as one axis (from white marker to grey marker) of the body coordinate system"},
    {"adjust_axes_to_room_button", "Ad&just axes to room", "Alt+J",
     "Set the orientation of the body coordinate system as the same as the room coordinate system"},
    {"pushButton_deleteMarker", "Delete marker", "", "Delete selected marker"},
    {"pos_xyzWidget", nullptr, "", "Change the position of viewing the body"},
    {"ori_xyzWidget", nullptr, "", "Change the orientation of viewing  the body"},
    {"reset_view_button", "Reset &view", "Alt+V", "Set default value for the viewing of body "},
    {"online_checkbox", "use &tracked orientation", nullptr, "Use the information of tracked orientation"},
    {"undo_button", "&Undo", "Alt+U", "Undo the last modification of the current body coodinate system"},
    {"redo_button", "&Redo", "Alt+R", "Redo the next body coodinate modification for current body"},
    {"help_button", "&Help", "Alt+H", "Help for graphic view control"},
    {"ok_button", "OK", "", "Save the changes and close the dialog"},
    {"apply_button", "&Apply", "Alt+A", "Apply the modification for current body"},
    {"cancel_button", "Cancel", "", "Close the dialog"},
};

TEST_F(Wiring, EveryControlHasItsTextShortcutAndHelp) {
  for (const Texts& expected : allTexts) {
    SCOPED_TRACE(expected.object);
    auto* const widget = find<QWidget>(expected.object);
    ASSERT_NE(widget, nullptr);
    if (expected.text != nullptr) {
      EXPECT_EQ(text(expected.object), expected.text);
    }
    EXPECT_EQ(widget->whatsThis().toStdString(), expected.help);
    const auto* const button = qobject_cast<QAbstractButton*>(widget);
    if (button != nullptr && expected.shortcut != nullptr) {
      EXPECT_EQ(button->shortcut().toString().toStdString(), expected.shortcut);
    }
  }
  EXPECT_EQ(find<QAbstractButton>("online_checkbox")->shortcut(), QKeySequence("Alt+T"));
  EXPECT_EQ(dialog->windowTitle(), "Body Adjustment");
  EXPECT_TRUE(dialog->isSizeGripEnabled());
  EXPECT_EQ(find<QLabel>("loadBody")->buddy(), &bodies());
  EXPECT_EQ(find("loadBody")->minimumWidth(), 200);
  EXPECT_EQ(find("loadBody")->maximumWidth(), 200);
}

TEST_F(Wiring, TheSpecialButtonsExplainThemselvesInOneSmallParagraph) {
  const struct {
    const char* object;
    const char* text;
    const char* shortcut;
    const char* help;
  } special[] = {
      {"pushButton_due_to_body", "Due to &body", "Alt+B",
       "Change the body coordinate system as the image shows. The origin and orientation fulfill the definition of "
       "calibration type of &quot;Due to body&quot;"},
      {"pushButton_due_to_room", "Due to room (origin in &COG)", "Alt+C",
       "Set the origin of the body coordinate system in the Center Of Gravity of the body, orientate the coordinate "
       "system as the same as the orientation of room coordinate system"},
      {"pushButton_due_to_room_0", "Due to room (origin in &marker)", "Alt+M",
       "Set the origin of the body coordinate system in Marker #1, orientate the orientation the same as the room "
       "coordinate system"}};
  for (const auto& expected : special) {
    SCOPED_TRACE(expected.object);
    const auto* const button = find<QAbstractButton>(expected.object);
    EXPECT_EQ(text(expected.object), expected.text);
    EXPECT_EQ(button->shortcut().toString().toStdString(), expected.shortcut);
    for (const QString& help : {button->whatsThis(), button->toolTip()}) {
      EXPECT_THAT(help.toStdString(), HasSubstr(expected.help));
      EXPECT_THAT(help.toStdString(), HasSubstr("font-size:8pt"));
      EXPECT_EQ(help.count("<p>") + help.count("<p "), 1);
    }
  }
}

TEST_F(Wiring, PagesLabelsAndColoursAreAsFixed) {
  auto* const tabs = find<QTabWidget>("tabWidget");
  ASSERT_EQ(tabs->count(), 3);
  const char* const pages[][2] = {{"tab", "&General"}, {"tab_2", "&Special"}, {"tab_3", "&Em"}};
  for (int page = 0; page < 3; ++page) {
    EXPECT_EQ(tabs->widget(page)->objectName().toStdString(), pages[page][0]);
    EXPECT_EQ(tabs->tabText(page).toStdString(), pages[page][1]);
  }
  // The tables have a label of this name, too.
  EXPECT_EQ(tabs->findChild<QLabel*>("label")->text(), "Body position");
  const char* const labels[][2] = {{"label_2", "Body orientation"},         {"view_pos_label", "View position"},
                                   {"view_ori_label", "View orientation"},  {"label_15", "emissions"},
                                   {"label_unitVector", "unit vector"},     {"label_normalized", "normalized:"},
                                   {"label_openingAngle", "opening angle"}, {"label_alpha", "alpha [deg]"}};
  for (const auto& label : labels) {
    EXPECT_EQ(text(label[0]), label[1]);
  }
  const char* const coloured[][3] = {{"label_ex_1", "px", "#ff0000"}, {"label_ey_1", "py", "#00aa00"},
                                     {"label_ez_1", "pz", "#0000ff"}, {"label_ex_2", "ex", "#ff0000"},
                                     {"label_ey_2", "ey", "#00aa00"}, {"label_ez_2", "ez", "#0000ff"}};
  for (const auto& label : coloured) {
    EXPECT_THAT(text(label[0]), HasSubstr(std::string(">") + label[1] + "<"));
    EXPECT_THAT(text(label[0]), HasSubstr(label[2]));
  }
  for (const char* const name : {"label_12", "label_13", "label_14", "label_7", "label_9", "label_11", "body_icon",
                                 "error_label", "horizontalLayout_3", "line"}) {
    EXPECT_NE(dialog->findChild<QObject*>(name), nullptr) << name;
  }
  for (const char* const image : {"label_6", "label_3", "label_8", "label_4", "label_10", "label_5"}) {
    EXPECT_FALSE(find<QLabel>(image)->pixmap(Qt::ReturnByValue).isNull()) << image;
  }
  EXPECT_TRUE(find("error_label")->isHidden());
}

TEST_F(Wiring, TheCanvasIsPageZeroAndTheTablesArePageOne) {
  auto* const pages = find<QStackedWidget>("stackedWidget");
  EXPECT_EQ(pages->widget(0), &canvas());
  EXPECT_EQ(pages->widget(1), dialog->findChild<BodyTable*>());
  EXPECT_EQ(pages->currentIndex(), 0);
  EXPECT_EQ(canvas().getModificationMode(), ABC_MODIFY_BODY);
}

TEST_F(Wiring, TheEntriesHaveTheirRangesModesAndDirections) {
  const struct {
    const char* name;
    double minimum, maximum;
    bool wrapping, spin, horizontal;
    std::vector<QString> labels;
  } groups[] = {{"pos_xyzWidget", -999.99, 999.99, false, false, true, {"x:", "y:", "z:"}},
                {"ori_xyzWidget", 0, 359, true, false, true, {"x:", "y:", "z:"}},
                {"body_pos_xyzWidget", -999.99, 999.99, false, true, false, {"x [mm]", "y [mm]", "z [mm]"}},
                {"body_ori_xyzWidget", 0, 359, true, true, false, {"x [deg]", "y [deg]", "z [deg]"}}};
  for (const auto& expected : groups) {
    SCOPED_TRACE(expected.name);
    EXPECT_EQ(group(expected.name).property("horizontal").toBool(), expected.horizontal);
    EXPECT_EQ(group(expected.name).xLabel(), expected.labels[0]);
    EXPECT_EQ(group(expected.name).yLabel(), expected.labels[1]);
    EXPECT_EQ(group(expected.name).zLabel(), expected.labels[2]);
    for (bsDoubleWidget* const entry : group(expected.name).findChildren<bsDoubleWidget*>()) {
      const auto* const spin = entry->findChild<QDoubleSpinBox*>();
      EXPECT_EQ(spin->minimum(), expected.minimum);
      EXPECT_EQ(spin->maximum(), expected.maximum);
      EXPECT_EQ(spin->wrapping(), expected.wrapping);
      EXPECT_EQ(spin->isHidden(), !expected.spin);
      EXPECT_EQ(entry->findChild<QwtWheel*>()->isHidden(), expected.spin);
      EXPECT_EQ(spin->value(), 0.0);
    }
  }
}

TEST_F(Wiring, TheContextMenuHasItsEntriesInOrder) {
  EXPECT_THAT(entries(menuWith("Small markers")),
              ElementsAre("Small markers [ ]", "Colored markers [x]", "Emissions [x]", "Long axes [ ]", "Show COG [ ]",
                          "|", "Show XY plane [x]", "Show YZ plane [ ]", "Show XZ plane [ ]", "|",
                          "Show room orientation [ ] (disabled)", "|", "Add line between markers (disabled)",
                          "Delete line between markers (disabled)", "|", "Data view"));
  EXPECT_THAT(entries(menuWith("Graphic view")), ElementsAre("Graphic view"));
}

TEST_F(Wiring, TheCanvasStartsWithTheDefaultDisplay) {
  const abcBody& body = canvas().getBody();
  EXPECT_FALSE(body.areMarkersSmall());
  EXPECT_TRUE(body.areMarkersColored());
  EXPECT_TRUE(body.areMarkerEmissionsShown());
  EXPECT_FALSE(body.areLongAxesShown());
  EXPECT_TRUE(body.isXYGridShown());
  EXPECT_FALSE(body.isYZGridShown());
  EXPECT_FALSE(body.isXZGridShown());
}

TEST_F(Wiring, EachDisplayEntrySwitchesItsOwnFlagAndOnlyThat) {
  const abcBody& body = canvas().getBody();
  const auto flags = [&] {
    return std::vector<bool>{body.areMarkersSmall(),  body.areMarkersColored(), body.areMarkerEmissionsShown(),
                             body.areLongAxesShown(), body.isXYGridShown(),     body.isYZGridShown(),
                             body.isXZGridShown()};
  };
  const std::vector<bool> defaults = {false, true, true, false, true, false, false};
  const char* const names[] = {"Small markers", "Colored markers", "Emissions",    "Long axes",
                               "Show XY plane", "Show YZ plane",   "Show XZ plane"};
  for (std::size_t i = 0; i < defaults.size(); ++i) {
    SCOPED_TRACE(names[i]);
    std::vector<bool> expected = defaults;
    expected[i] = !expected[i];
    menuEntry(names[i])->trigger();
    EXPECT_EQ(flags(), expected);
    EXPECT_EQ(menuEntry(names[i])->isChecked(), expected[i]);
    menuEntry(names[i])->trigger();
    EXPECT_EQ(flags(), defaults);
  }
}

TEST_F(Wiring, TheRoomEntryFollowsTheCanvasBeingOnline) {
  emit canvas().is_online(true);
  EXPECT_TRUE(menuEntry("Show room orientation")->isEnabled());
  emit canvas().is_online(false);
  EXPECT_FALSE(menuEntry("Show room orientation")->isEnabled());
}

TEST_F(Wiring, LineEntriesFollowTheCanvasAndCallIt) {
  run([&] {
    choose(cupRow);
    select({0, 1});
    EXPECT_TRUE(menuEntry("Add line between markers")->isEnabled());
    menuEntry("Add line between markers")->trigger();
    EXPECT_EQ(canvas().getBody().getLines().size(), 1U);
    EXPECT_FALSE(menuEntry("Add line between markers")->isEnabled());
    canvas().checkSelection(nullptr);
    canvas().checkSelection(canvas().getBody().getLines().at(0));
    EXPECT_TRUE(menuEntry("Delete line between markers")->isEnabled());
    menuEntry("Delete line between markers")->trigger();
    EXPECT_TRUE(canvas().getBody().getLines().empty());
    EXPECT_FALSE(menuEntry("Delete line between markers")->isEnabled());
  });
}

TEST_F(Wiring, ViewEntriesMoveTheCameraAndAreRelative) {
  group("pos_xyzWidget").setValues(1, 2, 3);
  EXPECT_TRUE(canvas().getViewPosition() == bsVector(1, 2, -297));
  QSignalSpy stored(&canvas(), &GLCanvas::storeViewRequest);
  emit group("pos_xyzWidget").xyzEditingFinished();
  EXPECT_EQ(stored.count(), 1);
  EXPECT_THAT(values("pos_xyzWidget"), ElementsAre(0, 0, 0));
  EXPECT_TRUE(canvas().getViewPosition() == bsVector(1, 2, -297));

  emit group("ori_xyzWidget").xyzEditingBegin();
  EXPECT_EQ(canvas().getViewMode(), ABC_VIEW_ROTATE);
  emit group("ori_xyzWidget").xyzEditingFinished();
  EXPECT_EQ(canvas().getViewMode(), ABC_VIEW_IDLE);
  stored.clear();

  group("ori_xyzWidget").setValues(0, 90, 0);
  const bsMatrix turned = canvas().get_view().orientation.toMatrix();
  EXPECT_NEAR(turned(0, 2), 1.0, 1e-9);  // z is seen where x was
  emit group("ori_xyzWidget").xyzEditingFinished();
  EXPECT_EQ(stored.count(), 1);
  EXPECT_THAT(values("ori_xyzWidget"), ElementsAre(0, 0, 0));
  EXPECT_NEAR(canvas().get_view().orientation.toMatrix()(0, 2), 1.0, 1e-9);
}

TEST_F(Wiring, ViewRequestsOfTheCanvasAdjustTheEntries) {
  group("pos_xyzWidget").setValues(10, 20, 30);
  emit canvas().translateViewRequest(1, 2, 3);
  EXPECT_THAT(values("pos_xyzWidget"), ElementsAre(11, 22, 33));
  emit canvas().rotateViewRequest(4, 5, 6);
  EXPECT_THAT(values("ori_xyzWidget"), ElementsAre(4, 5, 6));
}

TEST_F(Wiring, BodyEntriesChangeTheBodyAndAreRelative) {
  run([&] {
    choose(cupRow);
    QSignalSpy stored(&canvas(), &GLCanvas::storeBodyRequest);
    QSignalSpy changed(&canvas(), &GLCanvas::body_change);
    find("redo_button")->setEnabled(true);
    group("body_pos_xyzWidget").setValues(10, 0, 0);
    EXPECT_TRUE(enabled("undo_button"));
    EXPECT_FALSE(enabled("redo_button"));
    EXPECT_TRUE(enabled("apply_button"));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_NEAR(canvas().give_immediate_data().at(0).x, 0.0, 1e-9);
    emit group("body_pos_xyzWidget").xyzEditingFinished();
    EXPECT_EQ(stored.count(), 1);
    EXPECT_THAT(values("body_pos_xyzWidget"), ElementsAre(0, 0, 0));
    EXPECT_NEAR(canvas().give_data().at(0).x, 0.0, 1e-9);

    find("redo_button")->setEnabled(true);
    find("undo_button")->setEnabled(false);
    group("body_ori_xyzWidget").setValues(0, 0, 90);
    EXPECT_TRUE(enabled("undo_button"));
    EXPECT_FALSE(enabled("redo_button"));
    EXPECT_NEAR(canvas().give_immediate_data().at(0).x, 20.0, 1e-9);
    emit group("body_ori_xyzWidget").xyzEditingFinished();
    EXPECT_EQ(stored.count(), 2);
    EXPECT_THAT(values("body_ori_xyzWidget"), ElementsAre(0, 0, 0));
    EXPECT_NEAR(canvas().give_data().at(0).x, 20.0, 1e-9);
    EXPECT_EQ(canvas().getBody().getUndoCount(), 2U);
  });
}

TEST_F(Wiring, SignalsOfTheCanvasEnableTheButtons) {
  for (const bool on : {true, false}) {
    emit canvas().canUndo(on);
    EXPECT_EQ(enabled("undo_button"), on);
    emit canvas().canRedo(on);
    EXPECT_EQ(enabled("redo_button"), on);
    emit canvas().canSetOriginToMarker(on);
    EXPECT_EQ(enabled("set_origin_button"), on);
    emit canvas().canSetAxisToMarkers(on);
    EXPECT_EQ(enabled("set_axis_button"), on);
    emit canvas().body_change(on);
    EXPECT_EQ(enabled("apply_button"), on);
  }
  find("pushButton_deleteMarker")->setEnabled(true);
  emit canvas().canDeleteMarker();
  EXPECT_FALSE(enabled("pushButton_deleteMarker"));
}

TEST_F(Wiring, TheAxisDialogsChoiceReachesTheCanvas) {
  run([&] {
    choose(cupRow);
    select({0, 1});
    QSignalSpy stored(&canvas(), &GLCanvas::storeBodyRequest);
    emit dialog->findChild<SetAxisDialog*>()->setAxis(ABC_AXIS_X, ABC_AXIS_Y);
    EXPECT_EQ(stored.count(), 1);
  });
}

TEST_F(Wiring, TheTimerRepaintsAndFollows) {
  run([&] {
    choose(cupRow);
    auto* const timer = dialog->findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    QSignalSpy ticks(timer, &QTimer::timeout);
    EXPECT_TRUE(QTest::qWaitFor([&] { return ticks.count() >= 2; }, 2000));
    // A connection that can be taken away was there.
    EXPECT_TRUE(QObject::disconnect(timer, SIGNAL(timeout()), &canvas(), SLOT(updateGL())));
    EXPECT_TRUE(QObject::disconnect(timer, SIGNAL(timeout()), dialog.get(), SLOT(update_track())));
  });
}

TEST_F(Wiring, ASignalIsConnectedOnce) {
  // A second connection by name would do everything twice; the applied flag of a button shows it best.
  run([&] {
    choose(cupRow);
    QSignalSpy stored(&canvas(), &GLCanvas::storeBodyRequest);
    click("set_origin_cog_button");
    EXPECT_EQ(stored.count(), 1);
    click("undo_button");
    EXPECT_EQ(canvas().getBody().getRedoCount(), 1U);
    click("redo_button");
    EXPECT_EQ(canvas().getBody().getUndoCount(), 1U);
    menuEntry("Data view")->trigger();
    EXPECT_EQ(find<QStackedWidget>("stackedWidget")->currentIndex(), 1);
    watch.expectBox("Body Adjustment", "Discard the changes for all bodies?", QMessageBox::No);
    click("cancel_button");
    EXPECT_EQ(watch.boxes().size(), 1U);
  });
}

TEST_F(Wiring, TheStateIconsAreScaledToEighteenPixels) {
  run([&] {
    choose(cupRow);
    emit dialog->set_chosen_body_tracked(true);
    EXPECT_EQ(find<QLabel>("body_icon")->pixmap(Qt::ReturnByValue).size(), QSize(18, 18));
  });
}

std::string signatureOf(const QMetaMethod& method) {
  std::string text = std::string(method.typeName()) + " " + method.methodSignature().toStdString();
  for (const QByteArray& name : method.parameterNames()) {
    text += " " + name.toStdString();
  }
  return text;
}

TEST_F(Wiring, TheMetaObjectOffersTheSignalAndTheSlotsByName) {
  const QMetaObject* const meta = dialog->metaObject();
  EXPECT_STREQ(meta->className(), "BodyAdjustmentDialog");
  std::vector<std::string> all;
  std::vector<std::string> signalsOnly;
  for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
    all.push_back(signatureOf(meta->method(i)));
    if (meta->method(i).methodType() == QMetaMethod::Signal) {
      signalsOnly.push_back(all.back());
    } else {
      EXPECT_EQ(meta->method(i).methodType(), QMetaMethod::Slot) << all.back();
    }
  }
  EXPECT_THAT(signalsOnly, ElementsAre("void set_chosen_body_tracked(bool) status"));
  for (const char* const expected : {"int update_and_exec()",
                                     "void on_ok_button_clicked()",
                                     "void on_apply_button_clicked()",
                                     "void on_help_button_clicked()",
                                     "void on_reset_view_button_clicked()",
                                     "void on_online_checkbox_clicked()",
                                     "void on_undo_button_clicked()",
                                     "void on_redo_button_clicked()",
                                     "void on_pushButton_deleteMarker_clicked()",
                                     "void on_set_origin_cog_button_clicked()",
                                     "void on_adjust_axes_to_room_button_clicked()",
                                     "void on_pushButton_due_to_body_clicked()",
                                     "void on_pushButton_due_to_room_clicked()",
                                     "void on_pushButton_due_to_room_0_clicked()",
                                     "void on_doubleSpinBox_ex_valueChanged(double) ",
                                     "void on_doubleSpinBox_ey_valueChanged(double) ",
                                     "void on_doubleSpinBox_ez_valueChanged(double) ",
                                     "void on_doubleSpinBox_alpha_valueChanged(double) ",
                                     "void calcNormalizedUnitVector()",
                                     "void enableEmissionTab(bool) b",
                                     "void onReceiveOpenBodyAdjustmentDialog(QString,QString) src msg",
                                     "void reject()",
                                     "void can_set_origin_to_marker_slot(bool) can_set",
                                     "void set_origin_to_marker()",
                                     "void can_set_axis_slot(bool) can_set",
                                     "void set_axis()",
                                     "void update_current_body(int,bool) index show_msg",
                                     "void update_current_body(int) index",
                                     "void update_after_apply(int) index",
                                     "void update_track()",
                                     "void toggled_small_markers()",
                                     "void toggled_colored_markers()",
                                     "void toggled_marker_emissions()",
                                     "void toggled_long_axes()",
                                     "void toggled_show_COG()",
                                     "void toggled_show_XY()",
                                     "void toggled_show_YZ()",
                                     "void toggled_show_XZ()",
                                     "void toggled_show_room_ori()",
                                     "void toggled_switch_view()",
                                     "void table_body_change()",
                                     "void apply_button_enable(bool) can_apply",
                                     "void apply_button_enable()",
                                     "void update_room_buttons(bool) status",
                                     "void enable_undo_disable_redo()",
                                     "void onCanDeleteMarker()"}) {
    EXPECT_THAT(all, Contains(expected));
  }
  for (const char* const event : {"keyPressEvent(QKeyEvent*)", "showEvent(QShowEvent*)", "hideEvent(QHideEvent*)",
                                  "resizeEvent(QResizeEvent*)"}) {
    EXPECT_GE(meta->indexOfSlot(event), meta->methodOffset()) << event;
  }
}

}  // namespace
