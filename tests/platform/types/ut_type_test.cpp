#include "platform/types/ut_type.h"

#include <map>
#include <set>

#include <gtest/gtest.h>

#include "platform/types/type_table.h"

namespace ostra {
namespace {

UTType type(std::string_view identifier) {
  const auto found = UTType::withIdentifier(identifier);
  if (!found) throw std::runtime_error("no type " + std::string(identifier));
  return *found;
}

std::string identifierOf(std::string_view extension) {
  const auto found = UTType::withFilenameExtension(extension);
  return found ? found->identifier() : "none";
}

TEST(UTType, IsFoundByItsIdentifierInAnyCase) {
  EXPECT_EQ(type("PUBLIC.Png").identifier(), "public.png");
  EXPECT_EQ(type("PUBLIC.Png"), UTType::png());
}

TEST(UTType, DoesNotExistWhereNothingIsDeclared) {
  for (const char* text :
       {"", "public.pn", "public.pngs", "dyn.ah62d4rv4ge81u", "image/png", " public.png"}) {
    EXPECT_FALSE(UTType::withIdentifier(text)) << text;
  }
}

TEST(UTType, IsFoundByAnExtensionInAnyCase) {
  EXPECT_EQ(identifierOf("JPG"), "public.jpeg");
  EXPECT_EQ(identifierOf("jpeg"), "public.jpeg");
  EXPECT_EQ(identifierOf("Tif"), "public.tiff");
  EXPECT_EQ(identifierOf("webp"), "org.webmproject.webp");
  EXPECT_EQ(identifierOf("ppm"), "public.pbm");
  EXPECT_EQ(identifierOf("heic"), "public.heic");
  EXPECT_EQ(identifierOf("cr3"), "com.canon.cr3-raw-image");
}

TEST(UTType, IsNotFoundByAnExtensionThatNobodyClaims) {
  for (const char* text : {"", "docx", ".png", "png jpg", "image/png"})
    EXPECT_EQ(identifierOf(text), "none") << text;
}

TEST(UTType, GivesASharedExtensionToTheMoreGeneralClaimant) {
  EXPECT_EQ(identifierOf("dng"), "com.adobe.raw-image");
  EXPECT_EQ(identifierOf("orf"), "com.olympus.raw-image");
  EXPECT_EQ(identifierOf("tif"), "public.tiff");
}

TEST(UTType, ConformsToItselfAndToItsAncestors) {
  for (const char* ancestor : {"public.heic", "public.heif-standard", "public.image", "public.data",
                               "public.item", "public.content"}) {
    EXPECT_TRUE(UTType::heic().conformsTo(type(ancestor))) << ancestor;
  }
  EXPECT_TRUE(type("com.nikon.raw-image").conformsTo(type("public.camera-raw-image")));
  EXPECT_TRUE(type("com.nikon.raw-image").conformsTo(UTType::image()));
  EXPECT_TRUE(UTType::fileURL().conformsTo(type("public.url")));
  EXPECT_TRUE(type("public.svg-image").conformsTo(type("public.xml")));
}

TEST(UTType, DoesNotConformToARelativeThatIsNoAncestor) {
  EXPECT_FALSE(UTType::image().conformsTo(UTType::png()));
  EXPECT_FALSE(UTType::heic().conformsTo(UTType::heif()));
  EXPECT_FALSE(type("public.avif").conformsTo(UTType::heif()));
  EXPECT_FALSE(type("public.mpo-image").conformsTo(UTType::jpeg()));
  EXPECT_FALSE(type("com.adobe.pdf").conformsTo(UTType::image()));
  EXPECT_FALSE(type("org.nema.dicom").conformsTo(UTType::image()));
  EXPECT_FALSE(UTType::fileURL().conformsTo(UTType::image()));
  EXPECT_FALSE(type("com.adobe.raw-image").conformsTo(type("public.tiff")));
}

TEST(UTType, NamesThePreferredExtensionFirst) {
  EXPECT_EQ(UTType::jpeg().filenameExtensions(), (std::vector<std::string>{"jpeg", "jpg", "jpe", "jfif"}));
  EXPECT_EQ(UTType::png().filenameExtensions(), std::vector<std::string>{"png"});
  EXPECT_TRUE(UTType::image().filenameExtensions().empty());
  EXPECT_EQ(type("com.microsoft.ico").mimeTypes().front(), "image/vnd.microsoft.icon");
}

TEST(UTType, NamesWellKnownTypes) {
  EXPECT_EQ(UTType::image().identifier(), "public.image");
  EXPECT_EQ(UTType::png().identifier(), "public.png");
  EXPECT_EQ(UTType::jpeg().identifier(), "public.jpeg");
  EXPECT_EQ(UTType::heic().identifier(), "public.heic");
  EXPECT_EQ(UTType::heif().identifier(), "public.heif");
  EXPECT_EQ(UTType::fileURL().identifier(), "public.file-url");
  EXPECT_EQ(UTType::data().identifier(), "public.data");
}

TEST(TypeTable, DeclaresEveryIdentifierOnce) {
  std::set<std::string_view> seen;
  for (const TypeRow& row : kTypeTable) EXPECT_TRUE(seen.insert(row.identifier).second) << row.identifier;
}

TEST(TypeTable, SharesAnExtensionOnlyWhereFormatsReallyDo) {
  std::map<std::string, int> claimants;
  for (const TypeRow& row : kTypeTable) {
    for (const std::string& extension : type(row.identifier).filenameExtensions()) ++claimants[extension];
  }
  for (const auto& [extension, count] : claimants) {
    const bool mayBeShared = std::set<std::string>{"dng", "orf", "pic", "raw", "tif"}.count(extension) > 0;
    EXPECT_EQ(count > 1, mayBeShared) << extension;
  }
}

TEST(TypeTable, WritesExtensionsAndTypesInLowerCaseAndWithoutDots) {
  for (const TypeRow& row : kTypeTable) {
    EXPECT_EQ(row.extensions.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ."), std::string_view::npos)
        << row.identifier;
    EXPECT_EQ(row.mimeTypes.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ"), std::string_view::npos)
        << row.identifier;
    EXPECT_NE(row.extensions.substr(0, 1), " ") << row.identifier;
  }
}

TEST(TypeTable, MakesEveryImageFormatAnImage) {
  const std::set<std::string> others{"com.adobe.pdf", "org.nema.dicom", "public.xml"};
  for (const TypeRow& row : kTypeTable) {
    if (row.extensions.empty()) continue;
    EXPECT_EQ(type(row.identifier).conformsTo(UTType::image()),
              others.count(std::string(row.identifier)) == 0)
        << row.identifier;
  }
}

}  // namespace
}  // namespace ostra
