#include <Varnex/protocols/MimeTypes.h>

#include <gtest/gtest.h>

#include <memory>

using Varnex::MimeTypes;

namespace {

TEST(MimeTypesTest, GoesByTheLastExtensionInAnyCase) {
    const std::pair<const char*, const char*> cases[] = {
        {"index.HTML", "text/html"},
        {"/dir.d/README", ""},
        {"archive.tar.zip", "application/x-zip"},
        {"name.", ""},
        {"noext", ""},
        {"", ""},
        {".", ""},
        {"a/.css", "text/css"},
        {"a.zip/", ""},
        {"a.htmlx", ""},
        {"a.html ", ""},
        {"scene.wrz", "model/vrml"},
        {"scene.x3dvz", "model/x3d+vrml"},
        {"scene.x3dz", "model/x3d+xml"},
        {"picture.svgz", "image/svg+xml"},
        {"a.mp2", "audio/x-mpeg"},
        {"a.mp2v", "video/mpeg2"},
        {"a.mp2a", "audio/x-mpeg2"},
        {"a.edx", "application/x-morvel-engine+xml"},
        {"a.3dTIF", "image/x-3dtiff"},
        {"a.jfif", "image/jpeg"},
        {"a.cg", "application/x-shader-cg"},
    };
    for (const auto& [path, type] : cases) EXPECT_EQ(MimeTypes::identify(path), type) << path;
}

TEST(MimeTypesTest, TheTableOutlivesTheObjectsOfUsers) {
    const std::string& type = MimeTypes::identify("a.png");
    { const MimeTypes first, copy(first); }
    EXPECT_EQ(MimeTypes().identify("b.png"), "image/png");
    EXPECT_EQ(&MimeTypes::identify("c.png"), &type);
    EXPECT_EQ(&MimeTypes::identify("c"), &MimeTypes::identify("d.none"));
}

}  // namespace
