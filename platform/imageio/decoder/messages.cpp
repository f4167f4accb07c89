#include "platform/imageio/decoder/messages.h"

#include <memory>

#include "platform/imageio/decoder/wire.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {
namespace {

/// Properties with the carrier in the open.
struct SentProperties {
  Dictionary tree;
  std::optional<Carrier> carrier;
};

/// They may have been edited since they were read: what was read crosses too.
struct SentRequest {
  Layout layout;
  ProfileRecord profile;
  bool hasProperties = false;
  SentProperties properties;
  Dictionary treeAsRead;
};

}  // namespace

template <class Wire>
void cross(Wire& wire, Fault& fault) {
  wire(fault.kind, fault.limit);
}

template <class Wire>
void cross(Wire& wire, Opened& opened) {
  wire(opened.type, opened.count, opened.width, opened.height, opened.bits, opened.components);
}

template <class Wire>
void cross(Wire& wire, Layout& layout) {
  wire(layout.width, layout.height, layout.bitsPerComponent, layout.bitsPerPixel, layout.bytesPerRow,
       layout.model, layout.bitmapInfo);
}

template <class Wire>
void cross(Wire&, Untagged&) {}
template <class Wire>
void cross(Wire& wire, NamedSpace& space) {
  wire(space.name);
}
template <class Wire>
void cross(Wire& wire, Calibrated& space) {
  wire(space.white, space.primaries, space.gamma);
}
template <class Wire>
void cross(Wire& wire, IccProfile& profile) {
  wire(profile.bytes);
}

template <class Wire>
void cross(Wire& wire, DecodedPixels& pixels) {
  wire(pixels.layout, pixels.profile, pixels.offset, pixels.size);
}

template <class Wire>
void cross(Wire& wire, CarriedText& text) {
  wire(text.keyword, text.text, text.language, text.translatedKeyword);
}
template <class Wire>
void cross(Wire& wire, CarriedChunk& chunk) {
  wire(chunk.type, chunk.data, chunk.afterPixels);
}
template <class Wire>
void cross(Wire& wire, PixelAspect& aspect) {
  wire(aspect.x, aspect.y);
}

// Named member by member, so that a new one does not compile before it crosses. The tree of the carrier is
// the one that was read: it crosses once.
template <class Wire>
void cross(Wire& wire, Carrier& carrier) {
  auto& [exif, xmp, iptc, photoshopResources, comments, texts, pngChunks, pixelAspect, tree, toldByXmp] =
      carrier;
  wire(exif, xmp, iptc, photoshopResources, comments, texts, pngChunks, pixelAspect, toldByXmp);
}
template <class Wire>
void cross(Wire& wire, SentProperties& properties) {
  wire(properties.tree, properties.carrier);
}
template <class Wire>
void cross(Wire& wire, SentRequest& request) {
  wire(request.layout, request.profile, request.hasProperties, request.properties, request.treeAsRead);
}

namespace {

template <class T>
Bytes bytesOf(Answer<T> answer) {
  WireWriter wire;
  wire(answer);
  return std::move(wire).take();
}

SentProperties toSend(const Properties& properties) {
  SentProperties sent{properties.tree, std::nullopt};
  if (properties.carrier) sent.carrier = *properties.carrier;
  return sent;
}

Properties received(SentProperties sent, Dictionary treeAsRead) {
  Properties properties{std::move(sent.tree), nullptr};
  if (sent.carrier) {
    sent.carrier->tree = std::move(treeAsRead);
    properties.carrier = std::make_shared<const Carrier>(std::move(*sent.carrier));
  }
  return properties;
}

template <class T>
std::optional<Answer<T>> answerOf(ByteView message) {
  WireReader wire(message);
  Answer<T> answer{Fault{}};
  wire(answer);
  if (!wire.complete()) return std::nullopt;
  return answer;
}

}  // namespace

Bytes messageOf(const Answer<Opened>& opened) { return bytesOf<Opened>(opened); }
Bytes messageOf(const Answer<DecodedPixels>& pixels) { return bytesOf<DecodedPixels>(pixels); }

Bytes messageOf(const Answer<Bytes>& file) { return bytesOf<Bytes>(file); }

Bytes messageOf(const Answer<Properties>& properties) {
  if (const auto* fault = std::get_if<Fault>(&properties)) return bytesOf<SentProperties>(*fault);
  return bytesOf<SentProperties>(toSend(std::get<Properties>(properties)));
}

Bytes messageOf(const EncodingRequest& request) {
  SentRequest sent;
  sent.layout = request.layout;
  sent.profile = request.profile;
  sent.hasProperties = request.properties.has_value();
  if (request.properties) {
    sent.properties = toSend(*request.properties);
    if (request.properties->carrier) sent.treeAsRead = request.properties->carrier->tree;
  }
  WireWriter wire;
  wire(sent);
  return std::move(wire).take();
}

std::optional<Answer<Opened>> openedOf(ByteView message) { return answerOf<Opened>(message); }
std::optional<Answer<DecodedPixels>> pixelsOf(ByteView message) { return answerOf<DecodedPixels>(message); }

std::optional<Answer<Properties>> propertiesOf(ByteView message) {
  auto answer = answerOf<SentProperties>(message);
  if (!answer) return std::nullopt;
  if (const auto* fault = std::get_if<Fault>(&*answer)) return *fault;
  auto& sent = std::get<SentProperties>(*answer);
  Dictionary tree = sent.tree;
  return received(std::move(sent), std::move(tree));
}

std::optional<Answer<Bytes>> encodedOf(ByteView message) { return answerOf<Bytes>(message); }

std::optional<EncodingRequest> requestOf(ByteView message) {
  WireReader wire(message);
  SentRequest sent;
  wire(sent);
  if (!wire.complete()) return std::nullopt;
  EncodingRequest request{sent.layout, std::move(sent.profile), std::nullopt};
  if (sent.hasProperties)
    request.properties = received(std::move(sent.properties), std::move(sent.treeAsRead));
  return request;
}

}  // namespace ostra
