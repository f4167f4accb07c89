// Shows a panel, an alert or a save panel in windows and prints what came of it, for tests that look at
// windows alone:
//   panel_program panel [TITLES]      a panel like that of the profile conversion, with so many further
//   titles panel_program alert TITLE TEXT panel_program save FOLDER NAME    the panel of a PNG, asked for by
//   a thread of its own
#include <iostream>
#include <string>
#include <vector>

#include "platform/appkit/button.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/progress_indicator.h"
#include "platform/appkit/stack_view.h"
#include "platform/appkit/text_field.h"
#include "platform/appkit/window_renderer.h"
#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

class Panel : public NSViewController {
 public:
  explicit Panel(int titles) : titles_(titles) {}

  void loadView() override {
    const auto root = std::make_shared<NSView>(NSRect{0, 0, {460, 170}});
    const auto title = NSTextField::labelWithString("Choose a Title");
    title->setFont(NSFont::boldSystemFontOfSize(NSFont::systemFontSize() + 1));
    const auto explanation = NSTextField::wrappingLabelWithString(
        "A sentence that is long enough to take more than one line of the panel, in a smaller font and in a "
        "colour "
        "that steps back behind the rest of the panel.");
    explanation->setFont(NSFont::systemFontOfSize(NSFont::smallSystemFontSize()));
    explanation->setTextColor(NSColor::secondaryLabelColor);
    cancel_->setKeyEquivalent(kEscapeKey);
    cancel_->setAction([] { end("cancelled"); });
    accept_->setKeyEquivalent(kReturnKey);
    accept_->setAction([this] { accept(); });
    spinner_->setStyle(NSProgressIndicatorStyle::spinning);
    spinner_->setDisplayedWhenStopped(false);

    const auto choice = NSStackView::stackViewWithViews({NSTextField::labelWithString("Title:"), popUp_});
    const auto buttons =
        NSStackView::stackViewWithViews({spinner_, std::make_shared<NSView>(), cancel_, accept_});
    const auto outer = NSStackView::stackViewWithViews({title, choice, explanation, buttons},
                                                       NSUserInterfaceLayoutOrientation::vertical);
    outer->setSpacing(12);
    root->addSubview(outer);
    NSLayoutConstraint::activateConstraints({
        outer->leadingAnchor().constraintEqualToAnchor(root->leadingAnchor(), 20),
        outer->trailingAnchor().constraintEqualToAnchor(root->trailingAnchor(), -20),
        outer->topAnchor().constraintEqualToAnchor(root->topAnchor(), 18),
        outer->bottomAnchor().constraintEqualToAnchor(root->bottomAnchor(), -18),
        choice->trailingAnchor().constraintEqualToAnchor(outer->trailingAnchor()),
        buttons->trailingAnchor().constraintEqualToAnchor(outer->trailingAnchor()),
        popUp_->trailingAnchor().constraintEqualToAnchor(choice->trailingAnchor()),
        explanation->widthAnchor().constraintEqualToAnchor(outer->widthAnchor()),
    });
    setView(root);
    setPreferredContentSize(root->frame().size);
  }

  void viewDidLoad() override {
    for (const char* title : {"Alpha", "Beta", "Gamma"}) popUp_->addItem({title, tag_++, false});
    if (titles_ > 0) popUp_->addItem(NSMenuItem::separatorItem());
    for (int i = 1; i <= titles_; ++i) popUp_->addItem({"Further " + std::to_string(i), tag_++, false});
  }

 private:
  static void end(const std::string& how) {
    std::cout << how << std::endl;
    MainLoop::stop();
  }

  void accept() {
    accept_->setEnabled(false);
    cancel_->setEnabled(false);
    popUp_->setEnabled(false);
    spinner_->startAnimation();
    std::cout << "accepted " << popUp_->selectedItem()->title << std::endl;
    globalQueue(QualityOfService::userInitiated).async([] {
      std::string line;
      std::getline(std::cin, line);
      mainQueue().async([] { end("done"); });
    });
  }

  const int titles_;
  int tag_ = 0;
  const std::shared_ptr<NSPopUpButton> popUp_ = std::make_shared<NSPopUpButton>();
  const std::shared_ptr<NSButton> accept_ = std::make_shared<NSButton>("Accept");
  const std::shared_ptr<NSButton> cancel_ = std::make_shared<NSButton>("Cancel");
  const std::shared_ptr<NSProgressIndicator> spinner_ = std::make_shared<NSProgressIndicator>();
};

int showPanel(Renderer& renderer, int titles) {
  renderer.present(std::make_shared<Panel>(titles), "Panel");
  MainLoop::run();
  return 0;
}

int showAlert(const std::string& title, const std::string& text) {
  NSAlert alert;
  alert.messageText = title;
  alert.informativeText = text;
  alert.addButtonWithTitle("OK");
  alert.runModal();
  std::cout << "dismissed" << std::endl;
  return 0;
}

int showSavePanel(const std::string& folder, const std::string& name) {
  globalQueue(QualityOfService::userInitiated).async([folder, name] {
    mainQueue().sync([&folder, &name] {
      NSSavePanel panel;
      panel.setTitle("Save");
      panel.setMessage("Choose where to save the picture.");
      panel.setNameFieldStringValue(name);
      panel.setDirectoryURL(URL::fileURLWithPath(folder));
      panel.setAllowedContentTypes({UTType::png()});
      panel.setCanCreateDirectories(true);
      const NSModalResponse response = panel.runModal();
      std::cout << response << " " << (panel.url() ? panel.url()->path() : "nothing") << std::endl;
    });
    MainLoop::stop();
  });
  MainLoop::run();
  return 0;
}

int perform(const std::vector<std::string>& words) {
  std::string reason;
  Renderer* renderer = windowRenderer(reason);
  if (renderer == nullptr) {
    std::cerr << reason << std::endl;
    return 2;
  }
  const Service<Renderer>::Override shown(*renderer);
  if (words.at(0) == "alert") return showAlert(words.at(1), words.at(2));
  if (words.at(0) == "save") return showSavePanel(words.at(1), words.at(2));
  return showPanel(*renderer, words.size() > 1 ? std::stoi(words[1]) : 0);
}

}  // namespace
}  // namespace ostra

int main(int argc, char** argv) {
  const int status = ostra::perform({argv + 1, argv + argc});
  std::exit(status);
}
