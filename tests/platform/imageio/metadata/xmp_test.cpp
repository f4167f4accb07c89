#include "platform/imageio/metadata/xmp.h"

#include <gtest/gtest.h>

#include "platform/imageio/metadata/text_encoding.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

const std::string kOpen =
    "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"> <rdf:RDF "
    "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n";
const std::string kClose = "</rdf:RDF></x:xmpmeta>\n      \n<?xpacket end=\"w\"?>";

std::string packet(const std::string& descriptions) { return kOpen + descriptions + kClose; }

std::string cleaned(const std::string& text) {
  return std::string(asText(withoutPixelProperties(asBytes(text))));
}
std::string without(const std::string& text, std::string_view group) {
  return std::string(asText(withoutGroupProperties(asBytes(text), group)));
}
std::string turned(const std::string& text, int orientation) {
  return std::string(asText(withOrientation(asBytes(text), orientation)));
}

std::string attributes(const std::string& more) {
  return packet(
      "<rdf:Description rdf:about=\"\" xmlns:tiff='http://ns.adobe.com/tiff/1.0/'"
      " xmlns:exif='http://ns.adobe.com/exif/1.0/' xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'"
      " xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmlns:crs='http://ns.adobe.com/camera-raw-settings/1.0/'"
      " xmlns:hdrgm='http://ns.adobe.com/hdr-gain-map/1.0/' xmlns:xmpNote='http://ns.adobe.com/xmp/note/'"
      " xmp:Rating=\"5\"" +
      more + "/>\n");
}

std::string elements(const std::string& more) {
  return packet(
      "<rdf:Description rdf:about=\"\" xmlns:t=\"http://ns.adobe.com/tiff/1.0/\""
      " xmlns:e=\"http://ns.adobe.com/exif/1.0/\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\""
      " xmlns:crs=\"http://ns.adobe.com/camera-raw-settings/1.0/\">\n  <xmp:Rating>5</xmp:Rating>" +
      more + "\n</rdf:Description>\n");
}

}  // namespace

TEST(Xmp, CutsAttributesThatDescribeTheOldPixels) {
  for (const char* name :
       {"tiff:ImageWidth", "tiff:ImageLength", "tiff:BitsPerSample", "tiff:PhotometricInterpretation",
        "tiff:Compression", "exif:ColorSpace", "photoshop:ICCProfile", "photoshop:ColorMode",
        "xmp:Thumbnails", "crs:Exposure2012", "hdrgm:Version", "xmpNote:HasExtendedXMP"}) {
    const std::string attribute = "\n   " + std::string(name) + " = '1 > 0'";
    EXPECT_EQ(cleaned(attributes(attribute + " tiff:Make=\"M\"")), attributes(" tiff:Make=\"M\"")) << name;
  }
}

TEST(Xmp, CutsElementsWithAllThatIsInThem) {
  EXPECT_EQ(cleaned(elements(
                "\n  <t:BitsPerSample><rdf:Seq><rdf:li>8</rdf:li></rdf:Seq></t:BitsPerSample>"
                "<e:ColorSpace>1</e:ColorSpace>\n <t:Make>M</t:Make><crs:Look>\n<rdf:Description/></crs:Look>"
                "<t:Compression/><xmp:Thumbnails rdf:parseType='Resource'><x/></xmp:Thumbnails>")),
            elements("\n <t:Make>M</t:Make>"));
}

TEST(Xmp, KeepsEveryByteOfAPacketThatSaysNothingOfPixels) {
  const std::string text = elements(
      "<!-- <t:ImageWidth>1</t:ImageWidth> --> <t:Make>&lt;t:ImageWidth&gt;</t:Make>"
      "<e:UserComment><![CDATA[<e:ColorSpace>1</e:ColorSpace>]]></e:UserComment>"
      "<e:PixelXDimension>40</e:PixelXDimension><t:Orientation>6</t:Orientation>");
  EXPECT_EQ(cleaned(text), text);
}

TEST(Xmp, GoesByNamespacesNotByPrefixes) {
  const std::string strangers = packet(
      "<rdf:Description rdf:about='' xmlns:tiff='http://example.org/' tiff:ImageWidth='1' "
      "xmlns:crs='http://example.org/'>"
      "<crs:Version>1</crs:Version></rdf:Description>");
  EXPECT_EQ(cleaned(strangers), strangers);
  const std::string plain =
      "<R:RDF xmlns:R='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><R:Description xmlns:a='urn:a'>"
      "<a:b/>%<a:c/></R:Description></R:RDF>";
  const auto filled = [&](const std::string& text) {
    return std::string(plain).replace(plain.find('%'), 1, text);
  };
  EXPECT_EQ(cleaned(filled("<ImageWidth xmlns='http://ns.adobe.com/tiff/1.0/'>3</ImageWidth>")), filled(""));
}

TEST(Xmp, KeepsWhatDescribesIngredients) {
  const std::string text = packet(
      "<rdf:Description rdf:about='' xmlns:xmpMM='http://ns.adobe.com/xap/1.0/mm/' "
      "xmlns:tiff='http://ns.adobe.com/tiff/1.0/'>"
      "<xmpMM:Pantry><rdf:Bag><rdf:li><rdf:Description "
      "tiff:ImageWidth='3'/></rdf:li></rdf:Bag></xmpMM:Pantry>"
      "</rdf:Description>");
  EXPECT_EQ(cleaned(text), text);
}

TEST(Xmp, APacketThatRunsEmptyIsGone) {
  EXPECT_EQ(
      cleaned(packet(
          "<rdf:Description rdf:about='' xmlns:tiff='http://ns.adobe.com/tiff/1.0/' tiff:ImageWidth='1'/>")),
      "");
}

TEST(Xmp, KeepsWhatIsNoXmlAsItIs) {
  for (const std::string& text :
       {std::string("junk"),
        packet("<rdf:Description xmlns:tiff='http://ns.adobe.com/tiff/1.0/' tiff:ImageWidth='1'>"),
        packet("<a tiff:ImageWidth=1/>"), packet("<a></b>"),
        "<!DOCTYPE x [<!ENTITY y 'z'>]>" + attributes(" tiff:ImageWidth='1'"),
        attributes(" tiff:ImageWidth='1' tiff:Make='\xFF'"), std::string("<"), std::string("<a b"),
        std::string("</a>")}) {
    EXPECT_EQ(cleaned(text), text);
    EXPECT_EQ(turned(text, 1), text);
  }
}

TEST(Xmp, SetsTheOrientationWhereItIsTold) {
  EXPECT_EQ(turned(attributes(" tiff:Orientation='6'"), 1), attributes(" tiff:Orientation='1'"));
  EXPECT_EQ(turned(elements("<t:Orientation> 6 </t:Orientation>"), 8),
            elements("<t:Orientation>8</t:Orientation>"));
  EXPECT_EQ(turned(elements("<t:Orientation/>"), 8), elements("<t:Orientation/>"));
  EXPECT_EQ(turned(elements(""), 8), elements(""));
  EXPECT_EQ(turned(attributes(" tiff:Orientation='6'"), 9), attributes(" tiff:Orientation='6'"));
}

TEST(Xmp, AGroupGoesWithItsProperties) {
  const std::string place = elements("<e:GPSLatitude>48,51.5N</e:GPSLatitude>"),
                    exif = elements("<e:FNumber>28/10</e:FNumber>");
  EXPECT_EQ(without(place, "{GPS}"), elements(""));
  EXPECT_EQ(without(place, "{Exif}"), place);
  EXPECT_EQ(without(exif, "{Exif}"), elements(""));
  EXPECT_EQ(without(exif, "{PNG}"), exif);
  EXPECT_EQ(without(elements("<t:Make>M</t:Make>"), "{TIFF}"), elements(""));
}

TEST(Xmp, ExiftoolReadsTheRestOfItsOwnPacket) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const Bytes original =
      test::blockOf(test::jpegWithTags({"-XMP-dc:Title=T", "-XMP-dc:Subject=a", "-XMP-tiff:ImageWidth=2",
                                        "-XMP-tiff:BitsPerSample=8", "-XMP-exif:ColorSpace#=1",
                                        "-XMP-crs:Exposure2012=1.5", "-XMP-photoshop:City=C",
                                        "-XMP-photoshop:ICCProfileName=sRGB", "-XMP-tiff:Orientation#=6"}),
                    "XMP");
  auto before = test::exiftoolTags(original, "xmp");
  const Bytes cut = withOrientation(withoutPixelProperties(original), 3);
  auto after = test::exiftoolTags(cut, "xmp");
  for (const char* gone : {"XMP-tiff:ImageWidth", "XMP-tiff:BitsPerSample", "XMP-exif:ColorSpace",
                           "XMP-crs:Exposure2012", "XMP-photoshop:ICCProfileName"}) {
    EXPECT_EQ(before.erase(gone), 1u) << gone;
  }
  before["XMP-tiff:Orientation"] = "3";
  for (auto* tags : {&before, &after}) {
    std::erase_if(*tags, [](const auto& tag) { return !tag.first.starts_with("XMP"); });
  }
  EXPECT_EQ(before, after);
}

}  // namespace ostra
