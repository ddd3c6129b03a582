#include "verify/place_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace verify {
namespace {

TEST(PlaceNamesTest, NameWhatTheLayoutKnows) {
  EXPECT_EQ(describePlace("/"), "/");
  EXPECT_EQ(describePlace("/steps/S%2F1/fields/U/blocks/12/data"), "step \"S/1\", field \"U\", block 12");
  EXPECT_EQ(describePlace("/steps/S/fields/U/blocks/0/frames"), "step \"S\", field \"U\", block 0, its list of frames");
  EXPECT_EQ(describePlace("/steps/S/fields/U/frames"), "step \"S\", field \"U\", its list of frames");
  EXPECT_EQ(describePlace("/steps/S/frames/value"), "step \"S\", value of its frames");
  EXPECT_EQ(describePlace("/steps/S/history/R/outputs/U1"), "step \"S\", history region \"R\", output \"U1\"");
  EXPECT_EQ(describePlace("/assembly/elementSets/E/I"), "element set \"E\" in instance \"I\"");
  EXPECT_EQ(describePlace("/assembly/instances/I/nodeSets/N"), "instance \"I\", node set \"N\"");
  EXPECT_EQ(describePlace("/assembly/instances/I/mesh/nodes/labels"), "instance \"I\", labels of the mesh's nodes");
  EXPECT_EQ(describePlace("/assembly/instances/I/mesh/elements/C3D4/labels"),
            "instance \"I\", labels of the mesh's elements \"C3D4\"");
  EXPECT_EQ(describePlace("/assembly/sector/symmetryAxis"), "symmetry axis");
  EXPECT_EQ(describePlace("/parts/P/nodeSets/N"), "part \"P\", node set \"N\"");
  EXPECT_EQ(describePlace("/locations/3/elementLabels"), "location \"3\", elementLabels");
}

TEST(PlaceNamesTest, KeepThePathOfWhatItDoesNot) {
  for (const char* path : {"/checksums", "/steps/S/notes", "/steps/S/fields/U/blocks/0/notes", "/extra/a/b",
                           "/assembly/instances/I/notes/N", "/assembly/notes/a/b", "/parts/P/notes/N", "/"}) {
    EXPECT_EQ(describePlace(path), path);
  }
}

TEST(PlaceNamesTest, KnowTheRowsOfABlock) {
  EXPECT_EQ(blockOfRows("/steps/S/fields/U%2F/blocks/7/data"), (BlockPlace{"S", "U/", 7}));
  for (const char* path : {"/steps/S/fields/U/blocks/7/frames", "/steps/S/fields/U/blocks/seven/data",
                           "/steps/S/fields/U/blocks/-1/data", "/steps/S/fields/U/blocks/1x/data"}) {
    EXPECT_FALSE(blockOfRows(path).has_value()) << path;
  }
}

TEST(PlaceNamesTest, FramesAreARangeOrAList) {
  EXPECT_EQ(describeFrames({5}), "frame 5");
  EXPECT_EQ(describeFrames({5, 6}), "frames 5, 6");
  EXPECT_EQ(describeFrames({5, 6, 7}), "frames 5..7");
  EXPECT_EQ(describeFrames({5, 7, 8}), "frames 5, 7, 8");
  EXPECT_EQ(describeFrames({0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22}),
            "frames 0, 2, 4, 6, 8, 10, 12, 14, 16, 18 and 2 more");
}

}  // namespace
}  // namespace verify
