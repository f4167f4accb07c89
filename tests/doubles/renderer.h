#pragma once
#include <deque>

#include "platform/appkit/renderer.h"
#include "platform/dispatch/queue.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// Shows nothing and remembers everything. Save panels are answered from a list, then cancelled.
class RecordingRenderer : public Renderer {
 public:
  explicit RecordingRenderer(CallLog& log) : log_(log) {}

  void activate() override { log_.add("activate"); }
  void beep() override { log_.add("beep"); }
  void run(const NSAlert& alert) override {
    log_.add(std::string("alert") + (isMainThread() ? "" : " off the main thread"));
    alerts.push_back(alert);
  }
  SavePanelAnswer run(const NSSavePanel& panel) override {
    log_.add(std::string("save panel") + (isMainThread() ? "" : " off the main thread"));
    panels.push_back(panel);
    if (answers.empty()) return {};
    const SavePanelAnswer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  bool present(const std::shared_ptr<NSViewController>& controller, const std::string& title) override {
    log_.add("present “" + title + "”");
    presented.push_back(controller);
    return true;
  }
  void withdraw() override { log_.add("withdraw"); }
  bool progress(const Progress& /*progress*/) override { return true; }
  void notify(const std::string& title, const std::string& text) override {
    log_.add("notify “" + title + "”: " + text);
  }

  std::vector<NSAlert> alerts;
  std::vector<NSSavePanel> panels;
  std::deque<SavePanelAnswer> answers;
  std::vector<std::shared_ptr<NSViewController>> presented;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
