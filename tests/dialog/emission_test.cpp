// The emission editor: its fields, what it shows, what it hands to the canvas and what reaches the backend.
#include <QMessageBox>

#include "dialogtest.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class EmissionEditor : public DialogTest {
 protected:
  QDoubleSpinBox& spin(const char* name) { return *find<QDoubleSpinBox>(name); }
  std::vector<std::string> normalized() { return {text("label_ex"), text("label_ey"), text("label_ez")}; }
  void setDirection(double x, double y, double z) {
    spin("doubleSpinBox_ex").setValue(x);
    spin("doubleSpinBox_ey").setValue(y);
    spin("doubleSpinBox_ez").setValue(z);
  }
  /// The emission that every marker of the canvas has, or a failure.
  EmissionValues emissionOfAll() {
    const auto markers = canvas().give_data_with_emissions();
    EXPECT_FALSE(markers.isEmpty());
    const auto valuesOf = [](const AbcMarkerData& m) {
      return EmissionValues{m.emission_x, m.emission_y, m.emission_z, m.opening_angle};
    };
    for (const AbcMarkerData& marker : markers) {
      EXPECT_EQ(valuesOf(marker), valuesOf(markers.front()));
    }
    return valuesOf(markers.front());
  }
};

TEST_F(EmissionEditor, TheFieldsHaveTheirRangesAndStepsAndTheKeptInconsistentStart) {
  make();
  for (const char* const name : {"doubleSpinBox_ex", "doubleSpinBox_ey", "doubleSpinBox_ez"}) {
    EXPECT_EQ(spin(name).minimum(), -1.0);
    EXPECT_EQ(spin(name).maximum(), 1.0);
    EXPECT_EQ(spin(name).singleStep(), 0.1);
    EXPECT_EQ(spin(name).decimals(), 2);
  }
  EXPECT_EQ(spin("doubleSpinBox_ex").value(), 0.1);
  EXPECT_EQ(spin("doubleSpinBox_ey").value(), 0.0);
  EXPECT_EQ(spin("doubleSpinBox_ez").value(), 0.0);
  EXPECT_EQ(spin("doubleSpinBox_alpha").minimum(), 1.0);
  EXPECT_EQ(spin("doubleSpinBox_alpha").maximum(), 179.0);
  EXPECT_EQ(spin("doubleSpinBox_alpha").decimals(), 1);
  EXPECT_EQ(spin("doubleSpinBox_alpha").value(), 45.0);
  EXPECT_THAT(normalized(), ElementsAre("1.00", "1.00", "1.00"));
}

TEST_F(EmissionEditor, EveryChangeShowsTheDirectionWithLengthOneAndGoesToAllMarkers) {
  run([&] {
    choose(penRow);
    spin("doubleSpinBox_ex").setValue(1.0);
    EXPECT_THAT(normalized(), ElementsAre("1.000", "0.000", "0.000"));
    EXPECT_EQ(emissionOfAll(), (EmissionValues{1, 0, 0, 45}));
    spin("doubleSpinBox_ey").setValue(-1.0);
    EXPECT_THAT(normalized(), ElementsAre("0.707", "-0.707", "0.000"));
    spin("doubleSpinBox_ez").setValue(0.5);
    EXPECT_THAT(normalized(), ElementsAre("0.667", "-0.667", "0.333"));
    const EmissionValues e = emissionOfAll();
    EXPECT_NEAR(e[0], 2.0 / 3.0, 1e-9);
    EXPECT_NEAR(e[1], -2.0 / 3.0, 1e-9);
    EXPECT_NEAR(e[2], 1.0 / 3.0, 1e-9);
    spin("doubleSpinBox_alpha").setValue(120.5);
    EXPECT_EQ(emissionOfAll()[3], 120.5);
    EXPECT_EQ(emissionOfAll()[0], e[0]);
  });
}

TEST_F(EmissionEditor, TheOpeningAngleAloneSendsTheStartingDirectionNormalised) {
  run([&] {
    choose(penRow);
    spin("doubleSpinBox_alpha").setValue(60.0);
    EXPECT_THAT(normalized(), ElementsAre("1.000", "0.000", "0.000"));
    EXPECT_EQ(emissionOfAll(), (EmissionValues{1, 0, 0, 60}));
  });
}

TEST_F(EmissionEditor, AZeroDirectionStaysZero) {
  run([&] {
    choose(penRow);
    setDirection(0, 0, 0);
    EXPECT_THAT(normalized(), ElementsAre("0.000", "0.000", "0.000"));
    EXPECT_EQ(emissionOfAll(), (EmissionValues{0, 0, 0, 45}));
  });
}

TEST_F(EmissionEditor, TheFieldsNeverFollowABodyOrASelection) {
  run([&] {
    choose(penRow);
    select({3});
    choose(cupRow);
    select({1});
    EXPECT_EQ(spin("doubleSpinBox_ex").value(), 0.1);
    EXPECT_EQ(spin("doubleSpinBox_alpha").value(), 45.0);
    EXPECT_THAT(normalized(), ElementsAre("1.00", "1.00", "1.00"));
  });
}

TEST_F(EmissionEditor, WorksWithoutABody) {
  run([&] {
    setDirection(0, 0, 1);
    EXPECT_THAT(normalized(), ElementsAre("0.000", "0.000", "1.000"));
    EXPECT_FALSE(enabled("apply_button"));
    choose(penRow);  // shows the backend's emissions
    EXPECT_EQ(cells("tableWidget_emissions").front(), "1|1.00|0.00|0.00|60.00");
    click("cancel_button");
  });
}

TEST_F(EmissionEditor, TheTablesShowTheNewEmission) {
  run([&] {
    choose(cupRow);
    EXPECT_TRUE(find("tableWidget_emissions")->isHidden());
    setDirection(0, 0, 1);
    EXPECT_FALSE(find("tableWidget_emissions")->isHidden());
    EXPECT_EQ(cells("tableWidget_emissions").at(5), "6|0.00|0.00|1.00|45.00");
  });
}

TEST_F(EmissionEditor, TheValuesReachTheBackendWithTheApply) {
  const std::vector<Point> before = backend.body("wandgrip", 1).markers;
  run([&] {
    choose(penRow);
    enter("body_pos_xyzWidget", 0, "3");
    setDirection(0, 0, 1);
    spin("doubleSpinBox_alpha").setValue(30);
    heard();
    click("apply_button");
    const std::vector<EmissionValues> all(5, EmissionValues{0, 0, 1, 30});
    EXPECT_THAT(heard(), ElementsAreArray(
                             joined({{"send_raw_command korvex2 tracking stop", transformOf("wandgrip", 1, {-3, 0, 0})},
                                     writeOf("wandgrip", 1, seenFrom({3, 0, 0}, before), all),
                                     {"send_raw_command korvex2 tracking start"},
                                     fetchOf("wandgrip", 1)})));
    EXPECT_EQ(backend.body("wandgrip", 1).emissions, all);
    EXPECT_EQ(emissionOfAll(), all[0]);
    heard();
    click("ok_button");  // nothing is left to write
  });
  EXPECT_THAT(heard(), ElementsAreArray(hideLog()));
}

TEST_F(EmissionEditor, AnEmissionAloneIsAChangeToo) {
  run([&] {
    choose(penRow);
    EXPECT_FALSE(enabled("apply_button"));
    spin("doubleSpinBox_alpha").setValue(30);
    EXPECT_TRUE(enabled("apply_button"));
    heard();
    click("apply_button");
    EXPECT_FALSE(enabled("apply_button"));
    EXPECT_THAT(heard(), Not(Contains(StartsWith("send_raw_command korvex2 body transform"))));
    EXPECT_EQ(backend.body("wandgrip", 1).emissions.at(2), (EmissionValues{1, 0, 0, 30}));
  });
}

TEST_F(EmissionEditor, AnEmissionThatWasNotAppliedIsAskedForAndDiscarded) {
  const std::vector<EmissionValues> before = backend.body("wandgrip", 1).emissions;
  watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(penRow);
    spin("doubleSpinBox_alpha").setValue(30);
    choose(cupRow);
    EXPECT_EQ(backend.body("wandgrip", 1).emissions, before);
    spin("doubleSpinBox_alpha").setValue(31);
    click("cancel_button");
  });
  EXPECT_EQ(backend.body("wandgrip", 1).emissions, before);
}

TEST_F(EmissionEditor, AppliedEmissionsAreDiscardedToo) {
  const std::vector<Point> markers = backend.body("wandgrip", 1).markers;
  const std::vector<EmissionValues> before = backend.body("wandgrip", 1).emissions;
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(penRow);
    enter("body_ori_xyzWidget", 2, "50");
    click("apply_button");
    spin("doubleSpinBox_alpha").setValue(30);
    click("apply_button");
    enter("body_pos_xyzWidget", 1, "20");
    spin("doubleSpinBox_alpha").setValue(33);
    click("apply_button");
    choose(cupRow);
    click("cancel_button");
  });
  EXPECT_EQ(backend.body("wandgrip", 1).emissions, before);
  expectPoints(backend.body("wandgrip", 1).markers, markers);
}

TEST_F(EmissionEditor, EmissionsStayWhenTheCoordinatesTheyBelongToCannotBeDiscarded) {
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(penRow);
    enter("body_ori_xyzWidget", 2, "50");
    spin("doubleSpinBox_alpha").setValue(30);
    click("apply_button");
    backend.disturb = [](int, const std::string&, const std::string& text) {
      const bool isTransform = text.rfind("korvex2 body transform", 0) == 0;
      return isTransform ? std::optional<FakeChannel::Answer>({0, "korvex2 err 11 \"changed\""}) : std::nullopt;
    };
    backend.io.log.clear();
    click("cancel_button");
  });
  EXPECT_EQ(backend.io.logged("send_raw_command korvex2 body transform").size(), 1u);
  EXPECT_THAT(backend.io.logged("set_value body marker_emission"), IsEmpty());
}

TEST_F(EmissionEditor, EmissionsOfABodyWithoutAnyAreDiscardedToZero) {
  const std::vector<EmissionValues> none(6, EmissionValues{});
  watch.expectBox("Body Adjustment", discardQuestion, QMessageBox::Yes);
  run([&] {
    choose(cupRow);
    setDirection(0, 1, 0);
    click("apply_button");
    EXPECT_EQ(backend.body("standard", 1).emissions.at(0), (EmissionValues{0, 1, 0, 45}));
    click("cancel_button");
  });
  EXPECT_EQ(backend.body("standard", 1).emissions, none);
}

TEST_F(EmissionEditor, AnOldBackendIsSentNoEmissions) {
  backend.versions.backend_major = 1;
  backend.versions.backend_minor = 11;
  run([&] {
    choose(penRow);
    spin("doubleSpinBox_alpha").setValue(30);
    click("apply_button");
    EXPECT_THAT(heard(), Not(Contains(StartsWith("set_value body marker_emission"))));
  });
}

TEST_F(EmissionEditor, EnablingThePageDoesNothing) {
  run([&] {
    choose(penRow);
    dialog->enableEmissionTab(false);
    EXPECT_TRUE(find<QTabWidget>("tabWidget")->widget(2)->isEnabled());
    choose(tubeRow);
    dialog->enableEmissionTab(true);
    EXPECT_FALSE(find<QTabWidget>("tabWidget")->widget(2)->isEnabled());
  });
}

}  // namespace
