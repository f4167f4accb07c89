#include <csignal>
#include <cstring>

#include "engine/surface.h"
#include "tests/engine/engine_fixture.h"

// The pixels of a drawing are written by the tests here; that the platform draws the right ones is tested
// with the real surfaces in real_pixels_test.cpp.

namespace ostra::test {
namespace {

class Transform : public EngineOverDoubles {
 protected:
  static CGImageRef image(std::size_t bits, std::size_t components, CGImageAlphaInfo alpha,
                          CGColorSpaceRef space, std::size_t width = 2, std::size_t height = 1) {
    return makeImage(packedFormat(width, height, bits, components, alpha), std::move(space));
  }
  static CGImageRef rgba(std::size_t bits = 8) {
    return image(bits, 4, CGImageAlphaInfo::premultipliedLast, sRGB());
  }
  static CGImageRef grayAlpha(std::size_t bits = 8) {
    return image(bits, 2, CGImageAlphaInfo::premultipliedLast, gray());
  }

  static CGImageRef transform(Kind kind, const CGImageRef& image, bool keepAlpha,
                              CGColorSpaceRef target = nullptr) {
    return makeEngine(kind, std::move(target))->transformImage(image, keepAlpha, "a.png");
  }
  std::string failure(Kind kind, const CGImageRef& image, bool keepAlpha, CGColorSpaceRef target = nullptr) {
    bench_.log.clear();
    return failureOf([&] { transform(kind, image, keepAlpha, target); });
  }
  /// The surfaces asked for by a transform.
  Strings surfaces(Kind kind, const CGImageRef& image, bool keepAlpha, CGColorSpaceRef target = nullptr) {
    bench_.log.clear();
    failureOf([&] { transform(kind, image, keepAlpha, target); });
    return bench_.log.callsBeginningWith({"surface"});
  }
  /// Every drawing puts these components into each row of the surface.
  template <class Word>
  void paintRows(std::vector<Word> row) {
    bench_.graphics.paint = [row](CGBitmapContext& surface, const CGImage&) {
      for (std::size_t y = 0; y < surface.height(); ++y) {
        std::memcpy(surface.data() + y * surface.bytesPerRow(), row.data(), row.size() * sizeof(Word));
      }
    };
  }
  template <class Word>
  static std::vector<Word> row(const CGImageRef& image, std::size_t y, std::size_t count) {
    std::vector<Word> words(count);
    std::memcpy(words.data(), image->data() + y * image->bytesPerRow(), count * sizeof(Word));
    return words;
  }
};

using Words8 = std::vector<std::uint8_t>;
using Words16 = std::vector<std::uint16_t>;

// The profile conversion.

TEST_F(Transform, ToAProfileNeedsOne) {
  EXPECT_EQ(failure(Kind::convertColorProfile, rgba(), true), "a.png: no destination profile was chosen.");
  EXPECT_TRUE(drawing().empty());
}

TEST_F(Transform, ToACMYKProfileFailsWithoutDrawing) {
  const CGColorSpaceRef target = cmyk();
  EXPECT_EQ(failure(Kind::convertColorProfile, rgba(), false, target),
            "a.png: could not convert to the chosen profile (only RGB and gray profiles are supported).");
  EXPECT_TRUE(drawing().empty());
}

TEST_F(Transform, ToAProfileCarriesItsSpace) {
  const CGColorSpaceRef target = space(kCGColorSpaceDisplayP3);
  EXPECT_EQ(transform(Kind::convertColorProfile, rgba(), true, target)->colorSpace(), target);
  bench_.graphics.surfaceSteps.refuseAt(2);
  EXPECT_EQ(failure(Kind::convertColorProfile, rgba(), true, target),
            "a.png: could not convert to the chosen profile (only RGB and gray profiles are supported).");
}

TEST_F(Transform, ToAGrayProfileKeepsTransparencyAsTheGrayConversionDoes) {
  const CGImageRef result = transform(Kind::convertColorProfile, rgba(16), true, gray());
  EXPECT_EQ(result->bitsPerPixel(), 16u);
  EXPECT_EQ(result->bitsPerComponent(), 8u);
}

// Surfaces.

TEST_F(Transform, TakesThe16BitSurfacesOfItsTable) {
  EXPECT_EQ(surfaces(Kind::sRGB, rgba(16), true), Strings{"surface 2x1 model 1 bits 16 info 4097"});
  EXPECT_EQ(surfaces(Kind::sRGB, rgba(16), false), Strings{"surface 2x1 model 1 bits 16 info 4101"});
  EXPECT_EQ(surfaces(Kind::grayscale, rgba(16), false), Strings{"surface 2x1 model 0 bits 16 info 4096"});
}

TEST_F(Transform, TakesThe8BitSurfacesOfItsTable) {
  EXPECT_EQ(surfaces(Kind::sRGB, rgba(), true), Strings{"surface 2x1 model 1 bits 8 info 1"});
  EXPECT_EQ(surfaces(Kind::sRGB, rgba(), false), Strings{"surface 2x1 model 1 bits 8 info 5"});
  EXPECT_EQ(surfaces(Kind::grayscale, rgba(), false), Strings{"surface 2x1 model 0 bits 8 info 0"});
}

TEST_F(Transform, HasNoSurfaceForGrayOrCMYKWithAlpha) {
  for (const CGColorSpaceRef& target : {gray(), cmyk()}) {
    for (const bool wide : {false, true}) {
      EXPECT_EQ(makeSurface(*rgba(), target, {.keepAlpha = true, .wide = wide}), nullptr);
    }
  }
  EXPECT_TRUE(drawing().empty());
}

TEST_F(Transform, NeverTriesCMYKAtSixteenBits) {
  EXPECT_NE(makeSurface(*rgba(16), cmyk(), {.keepAlpha = false, .wide = true}), nullptr);
  EXPECT_EQ(drawing(), Strings{"surface 2x1 model 2 bits 8 info 0"});
}

TEST_F(Transform, TakesMoreThanEightBitsForWide) {
  EXPECT_EQ(surfaces(Kind::sRGB, image(32, 4, CGImageAlphaInfo::last, sRGB()), true),
            Strings{"surface 2x1 model 1 bits 16 info 4097"})
      << "floats too come out as 16-bit integers";
}

TEST_F(Transform, TakesAn8BitSurfaceWhereA16BitOneIsRefused) {
  bench_.graphics.refuse16Bits = true;
  EXPECT_EQ(surfaces(Kind::sRGB, rgba(16), true),
            (Strings{"surface 2x1 model 1 bits 16 info 4097", "surface 2x1 model 1 bits 8 info 1"}));
  EXPECT_EQ(surfaces(Kind::grayscale, rgba(16), false),
            (Strings{"surface 2x1 model 0 bits 16 info 4096", "surface 2x1 model 0 bits 8 info 0"}));
}

TEST_F(Transform, DrawsOnceAtTheImagesOwnSizeOnWhiteUnlessAlphaIsKept) {
  transform(Kind::sRGB, image(8, 4, CGImageAlphaInfo::premultipliedLast, sRGB(), 3, 2), false);
  EXPECT_EQ(drawing(), (Strings{"surface 3x2 model 1 bits 8 info 5", "fill colour 1.000000 1.000000",
                                "fill 0 0 3 2", "interpolation 1", "draw 0 0 3 2", "make image of surface"}));
  bench_.log.clear();
  transform(Kind::sRGB, rgba(), true);
  EXPECT_EQ(drawing(), (Strings{"surface 2x1 model 1 bits 8 info 1", "interpolation 1", "draw 0 0 2 1",
                                "make image of surface"}));
}

TEST_F(Transform, FailsInTheWordsOfItsKindWhenTheDrawingFails) {
  bench_.graphics.paint = [](CGBitmapContext& surface, const CGImage&) {
    dynamic_cast<MemorySurface&>(surface).spoil();
  };
  EXPECT_EQ(failure(Kind::sRGB, rgba(), true), "a.png: could not convert to sRGB.");
  EXPECT_EQ(failure(Kind::sRGBJPEG, rgba(), false), "a.png: could not convert to sRGB.");
  EXPECT_EQ(failure(Kind::grayscale, rgba(), true), "a.png: could not convert to grayscale.");
  EXPECT_EQ(failure(Kind::grayscaleJPEG, rgba(), false), "a.png: could not convert to grayscale.");
  EXPECT_EQ(failure(Kind::jpeg, rgba(), false), "a.png: could not flatten the image.");
  EXPECT_EQ(failure(Kind::invert, rgba(), true), "a.png: could not invert the image.");
  EXPECT_EQ(failure(Kind::convertColorProfile, rgba(), true, sRGB()),
            "a.png: could not convert to the chosen profile (only RGB and gray profiles are supported).");
}

TEST_F(Transform, StopsTheProcessWithoutTheSpacesThatAlwaysExist) {
  const auto stopped = testing::KilledBySignal(SIGABRT);
  const CGImageRef picture = rgba();
  bench_.graphics.missingSpaces.emplace(kCGColorSpaceSRGB);
  EXPECT_EXIT(transform(Kind::sRGB, picture, true), stopped, "");
  EXPECT_EXIT(transform(Kind::grayscale, picture, true), stopped, "");
  bench_.graphics.missingSpaces.clear();
  bench_.graphics.missingSpaces.emplace(kCGColorSpaceGenericGrayGamma2_2);
  EXPECT_EXIT(transform(Kind::grayscale, picture, false), stopped, "");
}

// Gray.

TEST_F(Transform, ToTransparentGrayDrawsTwoPlanesOfEightBitsHoweverWideTheSource) {
  transform(Kind::grayscale, grayAlpha(16), true);
  EXPECT_EQ(drawing(),
            (Strings{"surface 2x1 model 0 bits 8 info 0", "surface 2x1 model 1 bits 8 info 1",
                     "interpolation 1", "draw 0 0 2 1", "clear 0 0 2 1", "interpolation 1", "draw 0 0 2 1",
                     "image of 4 bytes, bits 8/16 row 4 info 1 interpolated intent 0"}))
      << "the gray plane is not filled, the alpha plane is cleared";
}

TEST_F(Transform, ToTransparentGrayWeavesTheTwoPlanes) {
  bench_.graphics.paint = [](CGBitmapContext& surface, const CGImage&) {
    const bool isGray = surface.colorSpace()->model() == CGColorSpaceModel::monochrome;
    for (std::size_t y = 0; y < surface.height(); ++y) {
      std::uint8_t* row = surface.data() + y * surface.bytesPerRow();
      for (std::size_t x = 0; x < surface.width(); ++x) {
        if (isGray)
          row[x] = static_cast<std::uint8_t>(10 * y + x);
        else
          row[4 * x + 3] = static_cast<std::uint8_t>(100 + 10 * y + x);
      }
    }
  };
  const CGImageRef result =
      transform(Kind::grayscale, image(8, 4, CGImageAlphaInfo::last, sRGB(), 3, 2), true);
  EXPECT_EQ(result->bytesPerRow(), 6u);
  EXPECT_EQ(row<std::uint8_t>(result, 0, 6), (Words8{0, 100, 1, 101, 2, 102}));
  EXPECT_EQ(row<std::uint8_t>(result, 1, 6), (Words8{10, 110, 11, 111, 12, 112}));
  EXPECT_EQ(result->colorSpace(), gray());
  EXPECT_EQ(result->alphaInfo(), CGImageAlphaInfo::premultipliedLast);
}

TEST_F(Transform, ToTransparentGrayFailsWithoutEitherPlane) {
  for (const int step : {1, 2}) {
    RecordingGraphicsCreation graphics(bench_.log);
    graphics.surfaceSteps.refuseAt(step);
    const Service<GraphicsCreation>::Override override(graphics);
    EXPECT_EQ(failure(Kind::grayscale, grayAlpha(), true), "a.png: could not convert to grayscale.");
    EXPECT_TRUE(bench_.log.callsBeginningWith({"image of"}).empty());
  }
}

TEST_F(Transform, ToTransparentGrayWantsAnSRGBSpaceThatIsRGB) {
  const CGImageRef picture = grayAlpha();
  bench_.graphics.substituteSpaces = {{std::string(kCGColorSpaceSRGB), gray()}};
  EXPECT_EQ(failure(Kind::grayscale, picture, true), "a.png: could not convert to grayscale.");
}

TEST_F(Transform, ToTransparentGrayFallsBackToLumaInSRGB) {
  bench_.graphics.imageSteps.refuseAt(1);
  paintRows<std::uint8_t>({255, 255, 255, 255, 1, 1, 1, 7});
  const CGImageRef result = transform(Kind::grayscale, grayAlpha(), true);
  EXPECT_EQ(result->colorSpace(), sRGB()) << "not the gray space";
  EXPECT_EQ(row<std::uint8_t>(result, 0, 8), (Words8{255, 255, 255, 255, 1, 1, 1, 7}));
}

TEST_F(Transform, LumaIsIntegerArithmeticOnTheStoredValues) {
  bench_.graphics.imageSteps.refuseAt(1);
  // (2126 R + 7152 G + 722 B + 5000) / 10000: 255 R gives 54.7, 255 G 182.9, 255 B 18.9; premultiplied (40,
  // 20, 10) gives 24.03 whatever its alpha.
  paintRows<std::uint8_t>({255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 40, 20, 10, 40});
  const CGImageRef result =
      transform(Kind::grayscale, image(8, 4, CGImageAlphaInfo::premultipliedLast, sRGB(), 4, 2), true);
  const Words8 expected{54, 54, 54, 255, 182, 182, 182, 255, 18, 18, 18, 255, 24, 24, 24, 40};
  EXPECT_EQ(row<std::uint8_t>(result, 0, 16), expected);
  EXPECT_EQ(row<std::uint8_t>(result, 1, 16), expected);
}

// Flattening.

TEST_F(Transform, FlatteningReturnsAnOpaqueSourceItself) {
  for (const auto alpha :
       {CGImageAlphaInfo::none, CGImageAlphaInfo::noneSkipLast, CGImageAlphaInfo::noneSkipFirst}) {
    for (const bool keepAlpha : {false, true}) {
      const CGImageRef wide = image(16, 4, alpha, cmyk());
      EXPECT_EQ(transform(Kind::jpeg, wide, keepAlpha), wide);
    }
  }
  EXPECT_TRUE(drawing().empty());
}

TEST_F(Transform, FlatteningPaintsEveryOtherLayoutOnWhiteWhateverItIsTold) {
  for (const CGBitmapInfo alpha : {1u, 2u, 3u, 4u, 7u, 8u}) {
    CGImage::Format format = packedFormat(2, 1, 8, 4, CGImageAlphaInfo::none);
    format.bitmapInfo = alpha;
    EXPECT_EQ(surfaces(Kind::jpeg, makeImage(format, sRGB()), true),
              Strings{"surface 2x1 model 1 bits 8 info 5"})
        << alpha;
    EXPECT_EQ(bench_.log.callsBeginningWith({"fill 0"}).size(), 1u);
  }
}

TEST_F(Transform, FlatteningStaysInTheImagesOwnSpaceWhereThatIsRGBOrGray) {
  const CGColorSpaceRef adobe = space(kCGColorSpaceAdobeRGB1998);
  EXPECT_EQ(transform(Kind::jpeg, image(8, 4, CGImageAlphaInfo::last, adobe), false)->colorSpace(), adobe);
  EXPECT_EQ(transform(Kind::jpeg, grayAlpha(), false)->colorSpace(), gray());
  EXPECT_EQ(transform(Kind::jpeg, image(8, 4, CGImageAlphaInfo::last, cmyk()), false)->colorSpace(), sRGB());
  EXPECT_EQ(transform(Kind::jpeg, image(8, 4, CGImageAlphaInfo::last, nullptr), false)->colorSpace(), sRGB());
}

// Inversion.

TEST_F(Transform, InversionChoosesItsSpace) {
  const auto resultSpace = [&](const CGImageRef& picture, bool keepAlpha) {
    return transform(Kind::invert, picture, keepAlpha)->colorSpace();
  };
  const CGColorSpaceRef adobe = space(kCGColorSpaceAdobeRGB1998);
  EXPECT_EQ(resultSpace(image(8, 4, CGImageAlphaInfo::last, adobe), true), adobe);
  EXPECT_EQ(resultSpace(image(8, 1, CGImageAlphaInfo::none, gray()), false), gray());
  EXPECT_EQ(resultSpace(grayAlpha(), true), sRGB()) << "gray with alpha has no surface";
  EXPECT_EQ(resultSpace(image(8, 4, CGImageAlphaInfo::none, cmyk()), false), sRGB());
  EXPECT_EQ(resultSpace(image(8, 4, CGImageAlphaInfo::noneSkipLast, nullptr), false), sRGB());
}

TEST_F(Transform, InversionIsMadeOnWhiteUnlessAlphaIsKept) {
  transform(Kind::invert, rgba(), false);
  EXPECT_EQ(drawing(), (Strings{"surface 2x1 model 1 bits 8 info 5", "fill colour 1.000000 1.000000",
                                "fill 0 0 2 1", "interpolation 1", "draw 0 0 2 1", "make image of surface"}));
  bench_.log.clear();
  transform(Kind::invert, rgba(), true);
  EXPECT_EQ(drawing(), (Strings{"surface 2x1 model 1 bits 8 info 1", "interpolation 1", "draw 0 0 2 1",
                                "make image of surface"}));
}

TEST_F(Transform, InversionLeavesTheSkippedComponentAlone) {
  paintRows<std::uint8_t>({0, 255, 100, 77, 1, 2, 3, 0});
  EXPECT_EQ(row<std::uint8_t>(transform(Kind::invert, rgba(), false), 0, 8),
            (Words8{255, 0, 155, 77, 254, 253, 252, 0}));
  paintRows<std::uint16_t>({0, 65535, 100, 777, 1, 2, 3, 0});
  EXPECT_EQ(row<std::uint16_t>(transform(Kind::invert, rgba(16), false), 0, 8),
            (Words16{65535, 0, 65435, 777, 65534, 65533, 65532, 0}));
}

TEST_F(Transform, InversionLeavesAlphaAloneAndStaysUnderIt) {
  paintRows<std::uint8_t>({0, 128, 100, 128, 0, 0, 0, 0});
  EXPECT_EQ(row<std::uint8_t>(transform(Kind::invert, rgba(), true), 0, 8),
            (Words8{128, 0, 28, 128, 0, 0, 0, 0}));
  paintRows<std::uint16_t>({0, 40000, 100, 40000, 0, 0, 0, 0});
  EXPECT_EQ(row<std::uint16_t>(transform(Kind::invert, rgba(16), true), 0, 8),
            (Words16{40000, 0, 39900, 40000, 0, 0, 0, 0}));
}

TEST_F(Transform, InversionTurnsAColourAboveItsAlphaIntoNothing) {
  paintRows<std::uint8_t>({200, 129, 128, 128, 255, 1, 0, 0});
  EXPECT_EQ(row<std::uint8_t>(transform(Kind::invert, rgba(), true), 0, 8),
            (Words8{0, 0, 0, 128, 0, 0, 0, 0}));
  paintRows<std::uint16_t>({65535, 40001, 40000, 40000, 1, 1, 1, 0});
  EXPECT_EQ(row<std::uint16_t>(transform(Kind::invert, rgba(16), true), 0, 8),
            (Words16{0, 0, 0, 40000, 0, 0, 0, 0}));
}

TEST_F(Transform, InversionReachesEveryPixelOfEveryRow) {
  for (const std::size_t width : {1u, 3u, 17u, 33u}) {
    const CGImageRef gray8 = image(8, 1, CGImageAlphaInfo::none, gray(), width, 3);
    paintRows(std::vector<std::uint8_t>(width, 5));
    const CGImageRef grayResult = transform(Kind::invert, gray8, false);
    const CGImageRef gray16 = image(16, 1, CGImageAlphaInfo::none, gray(), width, 3);
    paintRows(std::vector<std::uint16_t>(width, 5));
    const CGImageRef wideResult = transform(Kind::invert, gray16, false);
    for (std::size_t y = 0; y < 3; ++y) {
      EXPECT_EQ(row<std::uint8_t>(grayResult, y, width), Words8(width, 250));
      EXPECT_EQ(row<std::uint16_t>(wideResult, y, width), Words16(width, 65530));
    }
  }
}

}  // namespace
}  // namespace ostra::test
