#pragma once
#include "platform/foundation/service.h"
#include "tests/doubles/bundle.h"
#include "tests/doubles/data_writing.h"
#include "tests/doubles/file_coordination.h"
#include "tests/doubles/file_manager.h"
#include "tests/doubles/graphics_creation.h"
#include "tests/doubles/image_destination.h"
#include "tests/doubles/image_source.h"
#include "tests/doubles/log_sink.h"
#include "tests/doubles/renderer.h"
#include "tests/doubles/scoped_access.h"

namespace ostra::test {

/// Every service that a conversion touches, replaced by its double for as long as this lives. No disk, no
/// codec, no colour conversion, no window.
struct Workbench {
  CallLog log;
  RecordingBundle bundle{log};
  RecordingFileManager fileManager{log};
  RecordingFileCoordination coordination{log};
  RecordingDataWriting writing{log};
  RecordingImageSourceOpening sources{log};
  RecordingImageDestinationCreation destinations{log};
  RecordingGraphicsCreation graphics{log};
  RecordingRenderer renderer{log};
  RecordingLogSink sink{log};
  RecordingScopedAccess access{log};

 private:
  Service<NSBundle>::Override useBundle_{bundle};
  Service<NSFileManager>::Override useFileManager_{fileManager};
  Service<FileCoordination>::Override useCoordination_{coordination};
  Service<DataWriting>::Override useWriting_{writing};
  Service<ImageSourceOpening>::Override useSources_{sources};
  Service<ImageDestinationCreation>::Override useDestinations_{destinations};
  Service<GraphicsCreation>::Override useGraphics_{graphics};
  Service<Renderer>::Override useRenderer_{renderer};
  Service<LogSink>::Override useSink_{sink};
  Service<ScopedAccess>::Override useAccess_{access};
};

}  // namespace ostra::test
