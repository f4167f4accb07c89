#include "tests/system/full_pictures.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "platform/imageio/metadata/md5.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using namespace std::string_view_literals;

Bytes bigEndian(std::uint32_t number, unsigned bytes) {
  Bytes result;
  for (unsigned i = bytes; i-- > 0;) result.push_back(static_cast<std::uint8_t>(number >> 8 * i));
  return result;
}

std::string repeated(char c, std::size_t count) { return std::string(count, c); }

// Properties as attributes, elements and structures; those of pixels, of develop settings and of appended
// pictures among them.
std::string packetWith(const std::string& more) {
  return "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
         "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>" +
         more + "</rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}

std::string mainPacket(const std::string& extension) {
  return packetWith(
      "<rdf:Description rdf:about='' xmlns:tiff='http://ns.adobe.com/tiff/1.0/'"
      " xmlns:exif='http://ns.adobe.com/exif/1.0/' xmlns:aux='http://ns.adobe.com/exif/1.0/aux/'"
      " xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:xmp='http://ns.adobe.com/xap/1.0/'"
      " xmlns:xmpGImg='http://ns.adobe.com/xap/1.0/g/img/'"
      " xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'"
      " xmlns:crs='http://ns.adobe.com/camera-raw-settings/1.0/'"
      " xmlns:hdrgm='http://ns.adobe.com/hdr-gain-map/1.0/'"
      " xmlns:HDRGainMap='http://ns.apple.com/HDRGainMap/1.0/'"
      " xmlns:GCamera='http://ns.google.com/photos/1.0/camera/'"
      " xmlns:Container='http://ns.google.com/photos/1.0/container/'"
      " xmlns:xmpNote='http://ns.adobe.com/xmp/note/' xmlns:mine='http://example.org/mine/'"
      " tiff:Orientation='3' tiff:ImageWidth='11' tiff:ImageLength='12' tiff:Compression='1'"
      " tiff:PhotometricInterpretation='2' tiff:Make='Elsewhere'"
      " exif:ColorSpace='1' exif:PixelXDimension='11' exif:PixelYDimension='12' exif:FNumber='56/10'"
      " aux:Lens='50mm' aux:SerialNumber='123' xmp:Rating='4' xmp:CreatorTool='A tool'"
      " photoshop:ICCProfile='an old one' photoshop:ColorMode='3' photoshop:City='Paris'"
      " crs:Exposure2012='+0.50' crs:HasSettings='True' hdrgm:Version='1.0'"
      " HDRGainMap:HDRGainMapVersion='65536' GCamera:MotionPhoto='1' GCamera:MicroVideoOffset='99'" +
      (extension.empty() ? extension : " xmpNote:HasExtendedXMP='" + extension + "'") +
      " mine:word='kept'>"
      "<tiff:BitsPerSample><rdf:Seq><rdf:li>8</rdf:li></rdf:Seq></tiff:BitsPerSample>"
      "<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>Tower</rdf:li></rdf:Alt></dc:title>"
      "<dc:subject><rdf:Bag><rdf:li>iron</rdf:li><rdf:li>city</rdf:li></rdf:Bag></dc:subject>"
      "<xmp:Thumbnails><rdf:Alt><rdf:li rdf:parseType='Resource'><xmpGImg:image>AAAA</xmpGImg:image>"
      "</rdf:li></rdf:Alt></xmp:Thumbnails>"
      "<Container:Directory><rdf:Seq><rdf:li>x</rdf:li></rdf:Seq></Container:Directory>"
      "</rdf:Description>");
}

std::string extensionPacket() {
  return packetWith(
      "<rdf:Description rdf:about='' xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'>"
      "<photoshop:Instructions>" +
      repeated('y', 90'000) + "</photoshop:Instructions></rdf:Description>");
}

Bytes dataSet(int record, int number, std::string_view text) {
  return joined({{0x1C, static_cast<std::uint8_t>(record), static_cast<std::uint8_t>(number)},
                 bigEndian(static_cast<std::uint32_t>(text.size()), 2),
                 bytesOfText(text)});
}

Bytes iptcRecords() {
  return joined({dataSet(1, 90, "\x1B%G"), dataSet(2, 0, "\0\4"sv), dataSet(2, 105, "A tower"),
                 dataSet(2, 25, "iron"), dataSet(2, 25, "city"), dataSet(2, 120, "by day")});
}

Bytes resource(std::uint32_t id, Bytes data) {
  const auto size = static_cast<std::uint32_t>(data.size());
  if (data.size() % 2 != 0) data.push_back(0);
  return joined({bytesOfText("8BIM"), bigEndian(id, 2), {0, 0}, bigEndian(size, 4), data});
}

Bytes photoshopBlock() {
  const Bytes density =
      joined({bigEndian(200u << 16, 4), {0, 1, 0, 1}, bigEndian(200u << 16, 4), {0, 1, 0, 1}});
  const Bytes thumbnailHead = joined({bigEndian(1, 4), Bytes(24, 1)});
  return joined({resource(1005, density), resource(1028, iptcRecords()), resource(1034, {1}),
                 resource(1033, thumbnailHead), resource(1036, thumbnailHead),
                 resource(1039, randomBytes(40)), resource(1061, md5(iptcRecords())),
                 resource(1049, bigEndian(30, 4))});
}

// The list of two pictures: this one, and one of a type, such as 0 for gain maps.
Bytes multiPictureIndex(std::uint32_t type) {
  const auto entry = [](std::uint32_t kind, std::uint32_t size, std::uint32_t offset) {
    return joined({bigEndian(kind, 4), bigEndian(size, 4), bigEndian(offset, 4), bigEndian(0, 4)});
  };
  return joined({bytesOfText("MM\0*"sv), bigEndian(8, 4), bigEndian(3, 2),
                 joined({bigEndian(0xB000, 2), bigEndian(7, 2), bigEndian(4, 4), bytesOfText("0100")}),
                 joined({bigEndian(0xB001, 2), bigEndian(4, 2), bigEndian(1, 4), bigEndian(2, 4)}),
                 joined({bigEndian(0xB002, 2), bigEndian(7, 2), bigEndian(32, 4), bigEndian(50, 4)}),
                 bigEndian(0, 4), entry(0x030000, 1000, 0), entry(type, 100, 1000)});
}

Bytes extensionSegment(const std::string& name, const Bytes& extension, std::size_t from, std::size_t to) {
  const auto size = static_cast<std::uint32_t>(extension.size());
  const Bytes head =
      joined({bytesOfText(name), bigEndian(size, 4), bigEndian(static_cast<std::uint32_t>(from), 4)});
  const Bytes part(extension.begin() + static_cast<std::ptrdiff_t>(from),
                   extension.begin() + static_cast<std::ptrdiff_t>(to));
  return jpegSegment(0xE1, "http://ns.adobe.com/xmp/extension/\0"sv, joined({head, part}));
}

// By exiftool, but for the maker note, which it fills in as text.
void addExif(const std::string& path, const std::string& byteOrder) {
  const TemporaryFolder folder;
  makePicture(folder.path("small.jpg"), {"-resize", "32x20", "-strip"});
  writeFile(folder.path("note"), "MAKER" + repeated('n', 777));
  run({"exiftool",
       "-q",
       "-overwrite_original",
       "-ExifByteOrder=" + byteOrder,
       "-Make=Nobody",
       "-Model=N 1",
       "-IFD0:Orientation#=6",
       "-IFD0:XResolution=300",
       "-IFD0:YResolution=300",
       "-IFD0:ResolutionUnit=inches",
       "-IFD0:Artist=Jo",
       "-IFD0:Copyright=(c) Jo",
       "-IFD0:ImageDescription=a tower",
       "-IFD0:Software=hands",
       "-IFD0:ModifyDate=2024:05:06 07:08:10",
       "-ExposureTime=1/60",
       "-FNumber=2.8",
       "-ISO=400",
       "-DateTimeOriginal=2024:05:06 07:08:09",
       "-LensModel=50mm f/1.8",
       "-UserComment=by hand",
       "-ExifIFD:ColorSpace#=1",
       "-ExifIFD:ExifImageWidth=11",
       "-ExifIFD:ExifImageHeight=12",
       "-InteropIFD:InteropIndex=R98",
       "-GPSLatitude=48.858222",
       "-GPSLatitudeRef=N",
       "-GPSLongitude=2.2945",
       "-GPSLongitudeRef=E",
       "-MakerNoteUnknownText<=" + folder.path("note"),
       "-ThumbnailImage<=" + folder.path("small.jpg"),
       path});
}

// A profile of our own making, so that the test needs none of the machine's.
std::string profileAt(const TemporaryFolder& folder) {
  makePicture(folder.path("p.jpg"), {"-strip"});
  const ProgramResult result = InstalledProgram().run({"srgb-jpg", folder.path("p.jpg")});
  if (result.status != 0) throw std::runtime_error(result.errors);
  convert({folder.path("p.jpg"), "icc:" + folder.path("p.icc")});
  return folder.path("p.icc");
}

Bytes text(std::string_view type, std::string_view keyword, std::string_view content) {
  return pngChunk(type, bytesOfText(std::string(keyword) + '\0' + std::string(content)));
}

Bytes internationalText(std::string_view keyword, std::string_view head, std::string_view content) {
  return text("iTXt", keyword, std::string(head) + std::string(content));
}

Bytes rawProfileText(const std::string& kind, const Bytes& block) {
  std::string words = "\n" + kind + "\n" + std::to_string(block.size()) + "\n";
  for (const std::uint8_t byte : block) {
    words += "0123456789abcdef"[byte >> 4];
    words += "0123456789abcdef"[byte & 15];
  }
  return text("tEXt", "Raw profile type " + kind, words + "\n");
}

Bytes colourChunks() {
  Bytes chromaticities;
  for (const std::uint32_t number : {31270u, 32900u, 64000u, 33000u, 30000u, 60000u, 15000u, 6000u})
    chromaticities = joined({chromaticities, bigEndian(number, 4)});
  return joined({pngChunk("gAMA", bigEndian(45455, 4)), pngChunk("cHRM", chromaticities),
                 pngChunk("sRGB", Bytes{0}), pngChunk("sBIT", Bytes{8, 8, 8})});
}

Bytes otherChunks() {
  const Bytes suggested = joined({bytesOfText("web\0\x08"sv), Bytes{1, 2, 3, 255, 0, 9}});
  const Bytes calibration = joined({bytesOfText("depth\0"sv),
                                    bigEndian(0, 4),
                                    bigEndian(255, 4),
                                    {0, 2},
                                    bytesOfText("m\0"sv),
                                    bytesOfText("0\0"sv),
                                    bytesOfText("1"sv)});
  return joined({pngChunk("PLTE", Bytes{10, 20, 30, 40, 50, 60}), pngChunk("bKGD", Bytes{0, 1, 0, 2, 0, 3}),
                 pngChunk("hIST", Bytes{0, 9, 0, 8}), pngChunk("sPLT", suggested),
                 pngChunk("tIME", joined({bigEndian(2024, 2), {5, 6, 7, 8, 9}})),
                 pngChunk("pHYs", joined({bigEndian(5669, 4), bigEndian(5669, 4), {1}})),
                 pngChunk("oFFs", joined({bigEndian(3, 4), bigEndian(4, 4), {0}})),
                 pngChunk("pCAL", calibration),
                 pngChunk("sCAL", bytesOfText("\1"
                                              "1.5\0"
                                              "2.5"sv)),
                 pngChunk("sTER", Bytes{1}), pngChunk("abCd", bytesOfText("may be copied")),
                 pngChunk("abCD", bytesOfText("may not be copied"))});
}

Bytes standardTexts() {
  Bytes texts;
  for (const char* keyword : {"Title", "Author", "Description", "Copyright", "Creation Time", "Software",
                              "Disclaimer", "Warning", "Source", "Comment"})
    texts = joined({texts, text("tEXt", keyword, std::string("the ") + keyword)});
  return texts;
}

Bytes textChunks() {
  return joined({standardTexts(), text("tEXt", "parameters", "a tower, steps 20"),
                 internationalText("mood", "\0\0de\0Stimmung\0"sv, "fr\xC3\xB6hlich"),
                 rawProfileText("iptc", photoshopBlock()), rawProfileText("icc", randomBytes(30)),
                 rawProfileText("other", randomBytes(30))});
}

Bytes beforePixels(const Bytes& png, const Bytes& chunks) {
  const std::size_t pixels = positionOf("IDAT", png) - 4;
  Bytes result(png.begin(), png.begin() + static_cast<std::ptrdiff_t>(pixels));
  result.insert(result.end(), chunks.begin(), chunks.end());
  result.insert(result.end(), png.begin() + static_cast<std::ptrdiff_t>(pixels), png.end());
  return result;
}

Bytes afterPixels(const Bytes& png, const Bytes& chunks) {
  const auto end = png.end() - 12;
  return joined({Bytes(png.begin(), end), chunks, Bytes(end, png.end())});
}

std::uint32_t numberAt(const Bytes& bytes, std::size_t at, unsigned size) {
  std::uint32_t number = 0;
  for (unsigned i = 0; i < size; ++i) number = number << 8 | bytes.at(at + i);
  return number;
}

std::vector<std::string> chunksOf(const Bytes& png) {
  std::vector<std::string> parts;
  std::size_t at = 8;
  while (parts.empty() || parts.back() != "IEND") {
    const std::string type(png.begin() + static_cast<std::ptrdiff_t>(at + 4),
                           png.begin() + static_cast<std::ptrdiff_t>(at + 8));
    if (type != "IDAT" || parts.back() != type) parts.push_back(type);
    at += 12 + numberAt(png, at, 4);
  }
  if (at != png.size()) parts.emplace_back("trailer");
  return parts;
}

std::string printable(ByteView bytes) {
  std::string words;
  for (const std::uint8_t byte : bytes) words += byte >= ' ' && byte < 0x7F ? static_cast<char>(byte) : '?';
  return words;
}

// A comment with its words, another segment by what it begins with.
std::string segmentName(ByteView data, unsigned marker) {
  if (marker == 0xFE) return "COM " + printable(data);
  if ((marker & 0xF0) != 0xE0) return {};
  const std::string words = printable(data.first(std::min<std::size_t>(data.size(), 40)));
  return "APP" + std::to_string(marker & 15) + " " + words.substr(0, words.find_first_of("? "));
}

std::vector<std::string> segmentsOf(const Bytes& jpeg) {
  std::vector<std::string> parts;
  for (std::size_t at = 2; jpeg.at(at + 1) != 0xDA; at += 2 + numberAt(jpeg, at + 2, 2)) {
    const unsigned marker = jpeg.at(at + 1);
    const ByteView data = ByteView(jpeg).subspan(at + 4, numberAt(jpeg, at + 2, 2) - 2);
    if (marker == 0xC2) parts.emplace_back("progressive");
    if (std::string name = segmentName(data, marker); !name.empty()) parts.push_back(name);
  }
  if (jpeg[jpeg.size() - 2] != 0xFF || jpeg.back() != 0xD9) parts.emplace_back("trailer");
  return parts;
}

}  // namespace

void makeFullJpeg(const std::string& path, const std::string& byteOrder) {
  const TemporaryFolder folder;
  makePicture(path, {"-strip", "-interlace", "JPEG", "-density", "72x72", "-units", "PixelsPerInch",
                     "-profile", profileAt(folder)});
  addExif(path, byteOrder);
  const Bytes extension = bytesOfText(extensionPacket());
  const std::string name = md5Name(extension);
  const std::size_t half = 50'000;
  const Bytes thumbnail = joined({Bytes{0x13, 1, 1}, Bytes{9, 9, 9}});
  const Bytes segments = joined(
      {jpegSegment(0xE0, "JFXX\0"sv, thumbnail), jpegSegment(0xFE, "", bytesOfText("caf\xE9")),
       extensionSegment(name, extension, half, extension.size()), extensionSegment(name, extension, 0, half),
       jpegSegment(0xED, "Photoshop 3.0\0"sv, photoshopBlock()),
       jpegSegment(0xE2, "MPF\0"sv, multiPictureIndex(0)),
       jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/\0"sv, bytesOfText(mainPacket(name))),
       jpegSegment(0xE1, "http://ns.adobe.com/xap/1.0/\0"sv, bytesOfText(packetWith("<rdf:Description/>"))),
       jpegSegment(0xE4, "Unknown\0"sv, randomBytes(20)),
       jpegSegment(0xEC, "Ducky"sv, Bytes{0, 1, 0, 4, 0, 0, 0, 60, 0, 0}),
       jpegSegment(0xEE, "Adobe"sv, Bytes{0, 100, 0, 0, 0, 0, 1}),
       jpegSegment(0xFE, "", bytesOfText("a second comment"))});
  Bytes jpeg = readFile(path);
  // Behind the JFIF segment, which has to be the first.
  const auto first = std::ptrdiff_t{4} + numberAt(jpeg, 4, 2);
  jpeg.insert(jpeg.begin() + first, segments.begin(), segments.end());
  jpeg = joined({jpeg, encoded("public.jpeg", decoded(jpeg)), bytesOfText("appended data")});
  writeFile(path, ByteView(jpeg));
}

void makeFullPng(const std::string& path, const std::string& byteOrder) {
  const TemporaryFolder folder;
  makePicture(folder.path("exif.jpg"), {"-strip"});
  addExif(folder.path("exif.jpg"), byteOrder);
  const std::string exif = run({"exiftool", "-b", "-Exif", folder.path("exif.jpg")});
  makePicture(path, {"-strip", "-interlace", "PNG", "-define", "png:exclude-chunks=all", "-define",
                     "png:color-type=2"});
  Bytes png = beforePixels(readFile(path), joined({colourChunks(), otherChunks(), textChunks()}));
  png = afterPixels(png, joined({pngChunk("eXIf", bytesOfText(exif)),
                                 internationalText("XML:com.adobe.xmp", "\0\0\0\0"sv, mainPacket("")),
                                 pngChunk("xyZz", bytesOfText("behind the pixels"))}));
  writeFile(path, ByteView(joined({png, bytesOfText("appended data")})));
}

void makeMultiPictureJpeg(const std::string& path) {
  constexpr std::uint32_t kDisparity = 0x020002;
  makePicture(path, {"-strip"});
  const Bytes jpeg = readFile(path);
  const Bytes first = withJpegSegment(jpeg, jpegSegment(0xE2, "MPF\0"sv, multiPictureIndex(kDisparity)));
  writeFile(path, ByteView(joined({first, jpeg})));
}

void makeTextPng(const std::string& path) {
  makePicture(path, {"-strip", "-define", "png:exclude-chunks=all", "-define", "png:color-type=2"});
  const Bytes time = text("tEXt", "Creation Time", "2024-05-06T07:08:09");
  writeFile(path, ByteView(beforePixels(readFile(path), joined({time, standardTexts()}))));
}

std::vector<std::string> partsOf(const std::string& path) {
  const Bytes file = readFile(path);
  return file.at(0) == 0x89 ? chunksOf(file) : segmentsOf(file);
}

std::vector<std::string> everyTag(const std::string& path) {
  const std::string output = run({"exiftool", "-a", "-u", "-G1", "-s", "-args", "-n", "--System:all",
                                  "--File:all", "--ExifTool:all", "--Composite:all", path});
  std::vector<std::string> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with('-')) lines.push_back(line.substr(1));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace ostra::test
