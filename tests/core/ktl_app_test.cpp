#include "ktl/core/ktl_app.h"

#include <cpl_conv.h>
#include <gdal.h>
#include <gtest/gtest.h>
#include <ogr_srs_api.h>

#include <filesystem>

#include "tests/support/application.h"

using ktl::test::Application;

TEST(Library, StartsOnceAndKnowsTheFormats) {
    const int starts = ktl::ComponentStarts();
    EXPECT_GE(starts, 1);
    EXPECT_EQ(ktl::StartLibrary(), 1);
    EXPECT_EQ(ktl::ComponentStarts(), starts);
    EXPECT_NE(GDALGetDriverByName("GeoJSON"), nullptr);
    EXPECT_STREQ(CPLGetConfigOption("GDAL_FILENAME_IS_UTF8", ""), "NO");
}

TEST(Library, RefusesToStartWithoutSockets) {
    const Application application;
    const auto before = ktl::SetSocketStart([] { return false; });
    const int starts = ktl::ComponentStarts();
    CKtlApp app;
    EXPECT_EQ(app.InitInstance(), FALSE);
    ktl::SetSocketStart(before);
    EXPECT_EQ(application.Questions(), std::vector<std::string>{"数据库初始化失败。 0"});
    EXPECT_EQ(app.InitInstance(), TRUE);
    EXPECT_EQ(ktl::ComponentStarts(), starts + 1);
    app.ExitInstance();
    EXPECT_EQ(ktl::ComponentStarts(), starts);
}

TEST(Library, UsesItsOwnGdalDataOnlyWhereThereIsSome) {
    ktl::StartLibrary();
    const std::string installed = CPLGetConfigOption("GDAL_DATA", "");
    {
        const Application application;
        ktl::StartLibrary();
        EXPECT_EQ(installed, CPLGetConfigOption("GDAL_DATA", ""));

        std::filesystem::create_directory(application.Folder().Path("data"));
        application.Folder().Write("data/ktl-support.txt", "x");
        ktl::StartLibrary();
        EXPECT_EQ(application.Folder().Path("data"), CPLGetConfigOption("GDAL_DATA", ""));
        EXPECT_NE(CPLFindFile("gdal", "ktl-support.txt"), nullptr);
    }
    ktl::StartLibrary();
    EXPECT_STREQ(CPLGetConfigOption("GDAL_DATA", ""), "");
    EXPECT_EQ(CPLFindFile("gdal", "ktl-support.txt"), nullptr);
    EXPECT_NE(CPLFindFile("gdal", "gdalvrt.xsd"), nullptr);
}
