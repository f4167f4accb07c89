#include <new>
#include <thread>
#include <type_traits>

#include "engine/related_item_presenter.h"
#include "platform/dispatch/main_loop.h"
#include "tests/doubles/application.h"
#include "tests/engine/engine_fixture.h"

namespace ostra::test {
namespace {

static_assert(!std::is_default_constructible_v<OstraRelatedItemPresenter>);

using Setting = NSSavePanel::Setting;

class Writing : public EngineOverDoubles {
 protected:
  static const URL& source() {
    static const URL url = URL::fileURLWithPath("/d/photo.webp");
    return url;
  }
  static void write(const OstraQuickActionEngine::Plan& plan, const URL& url) {
    const Bytes data{1, 2, 3};
    makeEngine(Kind::invert)->writeResult(data, plan, url, url.lastPathComponent());
  }
  static void writeInPlace() { write({source(), "public.webp", true}, source()); }
  static void writeSibling(const std::string& uti = "public.png") {
    write({URL::fileURLWithPath("/d/photo.png"), uti, false}, source());
  }
  static std::string inPlaceFailure() { return failureOf(writeInPlace); }
  static std::string siblingFailure() {
    return failureOf([] { writeSibling(); });
  }
  void answerPanel(const std::string& path) {
    bench_.renderer.answers.push_back({NSModalResponseOK, URL::fileURLWithPath(path)});
  }
};

TEST_F(Writing, InPlaceGoesThroughAPrivateCopyOfTheSameName) {
  writeInPlace();
  EXPECT_EQ(
      bench_.log.calls(),
      (Strings{"coordinate /d/photo.webp option 8",
               "make folder 99 in domain 1 for /d/photo.webp, creating it", "write /replacement/photo.webp",
               "replace /d/photo.webp with /replacement/photo.webp", "remove /replacement", "coordinated"}));
  EXPECT_EQ(bench_.writing.files.at("/replacement/photo.webp"), (Bytes{1, 2, 3}));
}

TEST_F(Writing, InPlaceWorksOnTheFileThatTheCoordinatorNames) {
  bench_.coordination.target = URL::fileURLWithPath("/moved/p.webp");
  writeInPlace();
  EXPECT_EQ(bench_.log.callsBeginningWith({"make", "write", "replace"}),
            (Strings{"make folder 99 in domain 1 for /moved/p.webp, creating it", "write /replacement/p.webp",
                     "replace /moved/p.webp with /replacement/p.webp"}));
}

TEST_F(Writing, InPlaceReplacesTheVersionThatWasOpened) {
  const FileVersion version{.device = 1, .inode = 2, .size = 3, .modified = 4, .changed = 5};
  const URL url = source().withFileVersion(version);
  write({url, "public.webp", true}, url);
  EXPECT_EQ(bench_.fileManager.replacedVersion, version);
}

TEST_F(Writing, InPlaceReportsTheStepThatFailed) {
  bench_.fileManager.steps.failAt(1, cocoaError(640));
  EXPECT_EQ(inPlaceFailure(), "photo.webp: could not rewrite the file: cocoa words");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"write", "replace", "remove"}).empty());
}

TEST_F(Writing, InPlaceLeavesTheFolderAfterAFailedWrite) {
  bench_.writing.steps.failAt(1, cocoaError(640));
  EXPECT_EQ(inPlaceFailure(), "photo.webp: could not rewrite the file: cocoa words");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"replace", "remove"}).empty());
}

TEST_F(Writing, InPlaceLeavesTheFinishedCopyAfterAFailedReplacement) {
  bench_.fileManager.steps.failAt(2, posixError(13));
  EXPECT_EQ(inPlaceFailure(), "photo.webp: could not rewrite the file: posix words");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"remove"}).empty());
}

TEST_F(Writing, InPlaceIgnoresAFolderThatCannotBeRemoved) {
  bench_.fileManager.steps.failAt(3, posixError(13));
  EXPECT_EQ(inPlaceFailure(), "");
}

TEST_F(Writing, InPlacePutsTheCoordinatorsErrorBeforeTheAccessors) {
  bench_.writing.steps.failAt(1, posixError(28));
  bench_.coordination.errorAfter = cocoaError(512);
  EXPECT_EQ(inPlaceFailure(), "photo.webp: could not rewrite the file: cocoa words");
}

TEST_F(Writing, InPlaceDoesNothingWhenTheCoordinatorRefuses) {
  bench_.coordination.errorBefore = cocoaError(512);
  EXPECT_EQ(inPlaceFailure(), "photo.webp: could not rewrite the file: cocoa words");
  EXPECT_EQ(bench_.log.calls(), Strings{"coordinate /d/photo.webp option 8"});
}

TEST_F(Writing, InPlaceNeverAsksWithAPanel) {
  for (const NSError& refusal : {cocoaError(513), cocoaError(642), posixError(1), posixError(13)}) {
    bench_.coordination.errorBefore = refusal;
    EXPECT_FALSE(inPlaceFailure().empty());
  }
  bench_.coordination.errorBefore = std::nullopt;
  bench_.fileManager.steps.failAt(1, cocoaError(513));
  EXPECT_FALSE(inPlaceFailure().empty());
  EXPECT_TRUE(bench_.renderer.panels.empty());
  EXPECT_TRUE(bench_.sink.lines.empty());
}

TEST_F(Writing, InPlaceTurnsAForeignExceptionIntoAFailureOfTheFile) {
  bench_.writing.steps.failAt(1, std::bad_alloc());
  EXPECT_EQ(inPlaceFailure().rfind("photo.webp: could not rewrite the file: ", 0), 0u);
}

TEST_F(Writing, ASiblingIsWrittenPlainlyAndPresentedAsBelongingToItsSource) {
  writeSibling();
  EXPECT_EQ(bench_.log.calls(),
            (Strings{"coordinate /d/photo.png option 8 presented as /d/photo.png of /d/photo.webp",
                     "write /d/photo.png", "coordinated"}));
}

TEST_F(Writing, ASiblingIsWrittenWhereTheCoordinatorSays) {
  bench_.coordination.target = URL::fileURLWithPath("/staged/photo.png");
  writeSibling();
  EXPECT_EQ(bench_.writing.files.count("/staged/photo.png"), 1u);
}

TEST_F(Writing, ThePresenterKnowsWhichVersionOfTheSourceWasOpened) {
  const FileVersion version{.device = 1, .inode = 2, .size = 3, .modified = 4, .changed = 5};
  write({URL::fileURLWithPath("/d/photo.png"), "public.png", false}, source().withFileVersion(version));
  EXPECT_EQ(bench_.coordination.primary->fileVersion(), version);
}

TEST_F(Writing, ThePresenterAnswersWithItsTwoURLsAndASerialQueue) {
  const OstraRelatedItemPresenter presenter(source(), URL::fileURLWithPath("/d/photo.png"));
  EXPECT_EQ(presenter.presentedItemURL(), URL::fileURLWithPath("/d/photo.png"));
  EXPECT_EQ(presenter.primaryPresentedItemURL(), source());
  EXPECT_EQ(presenter.presentedItemOperationQueue()->maxConcurrentOperationCount(), 1);
  EXPECT_EQ(presenter.presentedItemOperationQueue(), presenter.presentedItemOperationQueue());
}

TEST_F(Writing, ASiblingThatIsRefusedIsAskedFor) {
  for (const NSError& refusal : {cocoaError(513), cocoaError(642), posixError(1), posixError(13)}) {
    bench_.coordination.errorBefore = refusal;
    EXPECT_EQ(siblingFailure(), "photo.webp: save cancelled.");
  }
  EXPECT_EQ(bench_.renderer.panels.size(), 4u) << "every refusal asks anew";
}

TEST_F(Writing, ARefusalOfTheWriteItselfCountsToo) {
  bench_.writing.steps.failAt(1, posixError(13));
  EXPECT_EQ(siblingFailure(), "photo.webp: save cancelled.");
}

TEST_F(Writing, NoOtherErrorIsARefusal) {
  const std::vector<NSError> others{
      cocoaError(640), cocoaError(512),       cocoaError(516),      cocoaError(1),
      cocoaError(13),  posixError(28),        posixError(30),       posixError(513),
      posixError(642), NSError("Other", 513), NSError("Other", 13), NSError("NSPOSIXErrorDomain ", 13)};
  for (const NSError& error : others) {
    bench_.coordination.errorBefore = error;
    EXPECT_EQ(siblingFailure(), "photo.webp: could not write photo.png: " + error.localizedDescription());
  }
  EXPECT_TRUE(bench_.renderer.panels.empty());
  EXPECT_TRUE(bench_.sink.lines.empty());
}

TEST_F(Writing, ASiblingPutsTheCoordinatorsErrorBeforeTheAccessors) {
  bench_.writing.steps.failAt(1, posixError(13));
  bench_.coordination.errorAfter = cocoaError(640);
  EXPECT_EQ(siblingFailure(), "photo.webp: could not write photo.png: cocoa words");
}

TEST_F(Writing, AForeignExceptionIsNoRefusal) {
  bench_.writing.steps.failAt(1, std::bad_alloc());
  EXPECT_EQ(siblingFailure().rfind("photo.webp: could not write photo.png: ", 0), 0u);
  EXPECT_TRUE(bench_.renderer.panels.empty());
}

TEST_F(Writing, TheRefusalIsLoggedBeforeThePanelIsShown) {
  bench_.coordination.errorBefore = posixError(13);
  siblingFailure();
  const std::string line =
      "invert: sibling write refused (" + posixError(13).debugDescription() + "), asking with a save panel";
  EXPECT_EQ(bench_.log.callsBeginningWith({"log", "save panel"}),
            (Strings{"log error " + line, "save panel"}));
}

TEST_F(Writing, ThePanelProposesThePlannedPlace) {
  bench_.coordination.errorBefore = posixError(13);
  siblingFailure();
  const NSSavePanel& panel = bench_.renderer.panels.at(0);
  EXPECT_EQ(panel.title(), "Save Converted Image");
  EXPECT_EQ(panel.message(),
            "Ostra is not allowed to write next to photo.webp. Choose where to save the converted image.");
  EXPECT_EQ(panel.nameFieldStringValue(), "photo.png");
  EXPECT_EQ(panel.directoryURL()->path(), "/d");
  EXPECT_EQ(panel.allowedContentTypes(), std::vector<UTType>{UTType::png()});
  EXPECT_TRUE(panel.canCreateDirectories());
  EXPECT_EQ(panel.settings(),
            (std::vector<Setting>{Setting::title, Setting::message, Setting::nameFieldStringValue,
                                  Setting::directoryURL, Setting::allowedContentTypes,
                                  Setting::canCreateDirectories}));
}

TEST_F(Writing, ThePanelAllowsEveryTypeWhereThePlannedOneIsUnknown) {
  bench_.coordination.errorBefore = posixError(13);
  failureOf([] { writeSibling("no.such.type"); });
  const auto& settings = bench_.renderer.panels.at(0).settings();
  EXPECT_EQ(std::count(settings.begin(), settings.end(), Setting::allowedContentTypes), 0);
}

TEST_F(Writing, ThePanelComesInFrontOfEverythingWhereThereIsAnApplication) {
  const RecordingApplication application(bench_.log);
  bench_.coordination.errorBefore = posixError(13);
  siblingFailure();
  EXPECT_EQ(bench_.log.callsBeginningWith({"activate", "save panel"}),
            (Strings{"activate ignoring others", "save panel"}));
}

TEST_F(Writing, TheChosenPlaceIsWrittenAtomicallyAndWithoutCoordination) {
  bench_.coordination.errorBefore = posixError(13);
  answerPanel("/elsewhere/chosen.png");
  writeSibling();
  EXPECT_EQ(bench_.log.callsBeginningWith({"coordinate", "save panel", "write"}),
            (Strings{"coordinate /d/photo.png option 8 presented as /d/photo.png of /d/photo.webp",
                     "save panel", "write /elsewhere/chosen.png atomically"}));
}

TEST_F(Writing, TheChosenPlaceMayFailToo) {
  bench_.coordination.errorBefore = posixError(13);
  answerPanel("/elsewhere/chosen.png");
  bench_.writing.steps.failAt(1, cocoaError(513));
  EXPECT_EQ(siblingFailure(), "photo.webp: could not write chosen.png: cocoa words");
  EXPECT_EQ(bench_.renderer.panels.size(), 1u) << "and is not asked for again";
}

TEST_F(Writing, OnlyOKWithAPlaceIsAChoice) {
  bench_.coordination.errorBefore = posixError(13);
  const URL place = URL::fileURLWithPath("/elsewhere/chosen.png");
  bench_.renderer.answers = {
      {NSModalResponseOK, std::nullopt}, {NSModalResponseCancel, place}, {1001, place}};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(siblingFailure(), "photo.webp: save cancelled.");
  EXPECT_TRUE(bench_.writing.files.empty());
}

TEST_F(Writing, ThePanelIsShownOnTheMainThreadWhileTheWriterWaits) {
  bench_.coordination.errorBefore = posixError(13);
  answerPanel("/elsewhere/chosen.png");
  std::thread writer([] {
    writeSibling();
    MainLoop::stop();
  });
  MainLoop::run();
  writer.join();
  EXPECT_EQ(bench_.log.callsBeginningWith({"save panel", "write"}),
            (Strings{"save panel", "write /elsewhere/chosen.png atomically"}));
}

TEST_F(Writing, ARefusalDoesNotChangeTheRouteOfTheNextFile) {
  bench_.coordination.errorBefore = posixError(13);
  siblingFailure();
  bench_.coordination.errorBefore = std::nullopt;
  writeSibling();
  EXPECT_EQ(bench_.writing.files.count("/d/photo.png"), 1u);
  EXPECT_EQ(bench_.renderer.panels.size(), 1u);
}

}  // namespace
}  // namespace ostra::test
