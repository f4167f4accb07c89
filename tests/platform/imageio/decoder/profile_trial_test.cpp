#include "platform/graphics/profile_trial.h"

#include <cstdlib>
#include <functional>
#include <new>

#include <gtest/gtest.h>

#include "platform/foundation/service.h"
#include "platform/graphics/profile_transform.h"
#include "tests/platform/graphics/built_profiles.h"
#include "tests/platform/imageio/decoder/confined.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra {
namespace {

using test::Confined;

/// The colour library on a profile that it cannot bear.
class EvilProfile : public ProfileTrial {
 public:
  explicit EvilProfile(std::function<void()> act) : act_(std::move(act)) {}
  void run(ByteView profile) override {
    if (!profile.empty()) act_();
  }

 private:
  std::function<void()> act_;
};

Bytes pictureWith(Bytes profile, CGColorSpaceModel model = CGColorSpaceModel::rgb) {
  const unsigned components = model == CGColorSpaceModel::cmyk ? 4 : 3;
  Pixels pixels = test::pixelsOf(test::softSamples(test::kWidth, test::kHeight, components, 8), test::kWidth,
                                 test::kHeight, model, 8, CGImageAlphaInfo::none);
  pixels.profile = IccProfile{std::move(profile)};
  return test::encoded("public.jpeg", pixels);
}

Answer<Pixels> decodeWith(ConfinedDoor& door, const Bytes& file, const Limits& limits = {}) {
  auto answer = door.open(test::fileOf(file), limits);
  if (const auto* fault = std::get_if<Fault>(&answer)) return *fault;
  return std::get<std::unique_ptr<Reader>>(answer)->decode(0);
}

Fault faultWith(const std::function<void()>& act, const Limits& limits = {}) {
  EvilProfile evil(act);
  const Service<ProfileTrial>::Override tried(evil);
  Confined confined;  // its decoders have the evil too
  const auto answer = decodeWith(confined.door, pictureWith(test::rgbTableProfile()), limits);
  const auto* fault = std::get_if<Fault>(&answer);
  return fault == nullptr ? Fault{FaultKind::notImage} : *fault;
}

TEST(ProfileTrial, OfAProfileOnWhichTheLibraryCrashesCostsTheDecoderAlone) {
  EXPECT_EQ(faultWith([] { *static_cast<volatile int*>(nullptr) = 1; }), Fault{FaultKind::crashed});
  EXPECT_EQ(faultWith([] { std::abort(); }), Fault{FaultKind::crashed});
}

TEST(ProfileTrial, OfAProfileOnWhichTheLibraryHangsEndsInTime) {
  Limits limits;
  limits.seconds = 1;
  EXPECT_EQ(faultWith(
                [] {
                  for (volatile bool on = true; on;) on = true;
                },
                limits),
            (Fault{FaultKind::limit, LimitName::seconds}));
}

TEST(ProfileTrial, OfAProfileForWhichThereIsNoMemoryIsNoPictureWithoutAProfile) {
  EXPECT_EQ(faultWith([] { throw std::bad_alloc(); }), (Fault{FaultKind::limit, LimitName::decodedBytes}));
}

TEST(ProfileTrial, LeavesPicturesWithoutAProfileAlone) {
  EvilProfile evil([] { std::abort(); });
  const Service<ProfileTrial>::Override tried(evil);
  Confined confined;
  const Bytes file = test::encoded(
      "public.png", test::pixelsOf(test::softSamples(test::kWidth, test::kHeight, 3, 8), test::kWidth,
                                   test::kHeight, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none));
  EXPECT_TRUE(std::holds_alternative<Pixels>(decodeWith(confined.door, file)));
}

// Tables of RGB and of inks, matrices and curves: what is told is the profile as it lay in the file.
TEST(ProfileTrial, IsPassedByGoodProfilesOfEveryKind) {
  Confined confined;
  const auto expectKept = [&](const Bytes& profile, CGColorSpaceModel model) {
    const auto answer = decodeWith(confined.door, pictureWith(profile, model));
    ASSERT_TRUE(std::holds_alternative<Pixels>(answer));
    const auto* record = std::get_if<IccProfile>(&std::get<Pixels>(answer).profile);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->bytes, profile);
  };
  expectKept(test::rgbTableProfile(), CGColorSpaceModel::rgb);
  expectKept(test::cmykTableProfile(), CGColorSpaceModel::cmyk);
  expectKept(test::gammaProfile(1.7, 2.1), CGColorSpaceModel::rgb);
  expectKept(test::curveTableProfile(64), CGColorSpaceModel::rgb);
}

TEST(ProfileTrial, EndsForProfilesOfAnyBytes) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    Bytes profile = seed % 2 == 0 ? test::rgbTableProfile() : test::cmykTableProfile();
    const Bytes noise = test::randomBytes(64, seed);
    for (std::size_t i = 0; i + 1 < noise.size(); i += 2)
      profile[132 + (noise[i] << 8 | noise[i + 1]) * 7 % (profile.size() - 132)] = noise[i];
    ProfileTrial::standard().run(profile);
  }
}

}  // namespace
}  // namespace ostra
