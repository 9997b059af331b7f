// The module's images are there for whoever links the library.
#include <gtest/gtest.h>

#include <QDir>
#include <QImage>

namespace {

TEST(Resources, TwelveImagesStandAtTheRoot) {
  const QStringList names = {"71.png",          "lock.png",   "72.png",      "red.png",         "rotation.png",
                             "due_to_room.png", "green.png",  "zooming.png", "due_to_body.png", "due_to_room_cog.png",
                             "grey.png",        "panning.png"};
  for (const QString& name : names) {
    const QImage image(":/" + name);
    EXPECT_FALSE(image.isNull()) << qPrintable(name);
  }
  EXPECT_EQ(QDir(":/").entryList({"*.png"}, QDir::Files).size(), names.size());
}

TEST(Resources, HelpPicturesHaveTheSizeTheyAreShownAt) {
  for (const char* name : {":/panning.png", ":/rotation.png", ":/zooming.png"}) {
    EXPECT_EQ(QImage(name).size(), QSize(180, 135)) << name;
  }
}

TEST(Resources, StateIconsDifferFromEachOther) {
  const auto shown = [](const char* name) {
    return QImage(name).scaled(18, 18, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  };
  EXPECT_NE(shown(":/red.png"), shown(":/green.png"));
  EXPECT_NE(shown(":/red.png"), shown(":/grey.png"));
  EXPECT_NE(shown(":/green.png"), shown(":/grey.png"));
}

}  // namespace
