// The backend is restarted with another version or the same, while the host stays.
#include <QDoubleSpinBox>
#include <QJsonArray>

#include "operatedhost.h"

namespace {

using namespace korvex2_test;

class BackendRestarted : public NetworkTest {
 protected:
  void SetUp() override {
    NetworkTest::SetUp();
    connectHost();
  }
  void restartAs(int minor) {
    restartBackend([this, minor] { backend.setVersion(1, minor, 0); });
    relay->forgetPassed();
  }
  QString versionReport(const char* now, const char* before) const {
    return QStringLiteral("The backend at 127.0.0.1:%1 has version %2 now, no longer %3.")
        .arg(relay->port())
        .arg(now, before);
  }
  /// Which of the gated features a session uses: lock asked for, target types asked for, emissions written, deletion.
  std::string session() {
    std::string used;
    host->run([&] {
      host->choose(activeRow);
      host->select(0);
      const bool canDelete = host->enabled("pushButton_deleteMarker");
      auto* const angle = host->find<QDoubleSpinBox>("doubleSpinBox_alpha");
      angle->setValue(angle->value() + 1);
      host->click("apply_button");
      used += relay->commands("korvex2 get config is_changeable") > 0 ? "lock " : "";
      used += relay->commands("korvex2 get body target_type ") > 0 ? "target " : "";
      used += relay->commands("korvex2 set body marker_emission ") > 0 ? "emission " : "";
      used += canDelete ? "delete " : "";
    });
    return used;
  }
};

TEST_F(BackendRestarted, WithAnotherVersionTheDialogAsksAndOffersWhatThatVersionKnows) {
  EXPECT_EQ(session(), "lock target emission delete ");
  const struct {
    int minor;
    const char* used;
  } versions[] = {
      {16, "lock target emission "}, {11, "lock "}, {9, "lock "}, {8, ""}, {17, "lock target emission delete "}};
  QByteArray former = "1.20.0";
  for (const auto& version : versions) {
    SCOPED_TRACE(version.minor);
    host->takeReports();
    restartAs(version.minor);
    const QByteArray now = "1." + QByteArray::number(version.minor) + ".0";
    EXPECT_TRUE(host->reports.contains(versionReport(now, former))) << host->reports.join('\n').toStdString();
    EXPECT_EQ(host->reports.filter("has version").size(), 1);
    EXPECT_EQ(host->frontend.versions().backend_minor, version.minor);
    EXPECT_EQ(session(), version.used);
    former = now;
  }
}

TEST_F(BackendRestarted, UnderAnOpenDialogTheNextSelectionFollowsTheVersion) {
  host->run([this] {
    host->choose(cupRow);
    host->select(1);
    EXPECT_TRUE(host->enabled("pushButton_deleteMarker"));
    restartAs(16);
    host->select(2);
    EXPECT_FALSE(host->enabled("pushButton_deleteMarker"));
    restartAs(17);
    host->select(1);
    EXPECT_TRUE(host->enabled("pushButton_deleteMarker"));
  });
}

TEST_F(BackendRestarted, WithTheSameVersionNothingIsSaidOfItAndTheSessionGoesOn) {
  const std::vector<Position> before = storedMarkers();
  host->run([&] {
    host->choose(cupRow);
    host->move("14");
    restartBackend();
    EXPECT_EQ(host->reports.filter("has version").size(), 0);
    EXPECT_EQ(host->takeReports().size(), 1) << "the loss";
    host->click("apply_button");  // the markers are those that were read, so the change may be applied
    EXPECT_EQ(host->takeReports().join('\n').toStdString(), "");
    expectNear(host->shown(), movedAlong(before, 0, 14));
  });
  expectNear(storedMarkers(), movedAlong(before, 0, 14));
  expectSoundDatabase();
}

TEST_F(BackendRestarted, OnAnotherDatabaseAChangeOfTheOldMarkersIsRefused) {
  host->run([this] {
    host->choose(cupRow);
    host->move("14");
    restartBackend([this] {
      backend.editCatalogue([](QJsonObject& catalogue) {  // the cup is a table now
        QJsonArray bodies = catalogue["bodies"].toArray();
        QJsonObject cup = bodies[0].toObject();
        cup["file"] = QStringLiteral("table.body");
        bodies[0] = cup;
        catalogue["bodies"] = bodies;
      });
    });
    const std::vector<Position> table = storedMarkers(2);
    host->takeReports();
    host->click("apply_button");
    EXPECT_TRUE(host->takeReports().contains(changedReport("standard b01")));
    expectNear(storedMarkers(1), table);
    watch.expectBox("Body Adjustment", applyQuestion, QMessageBox::No);
    host->choose(tableRow);
    host->choose(cupRow);
    expectNear(host->shown(), table);
  });
}

}  // namespace
