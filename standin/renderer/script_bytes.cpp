#include "standin/renderer/script_bytes.h"

#include <utility>

namespace standin {

ScriptBytes ScriptBytes::ofText(std::string text) {
  auto held = std::make_shared<const std::string>(std::move(text));
  const std::string_view bytes = *held;
  return {std::move(held), bytes};
}

bool ScriptSpool::append(std::string_view bytes) {
  if (!file_) file_ = makeNamelessFile();
  if (!file_ || !file_.writeAll(bytes)) return false;
  size_ += bytes.size();
  return true;
}

ScriptBytes ScriptSpool::take() {
  const std::size_t size = std::exchange(size_, 0);
  Descriptor file = std::move(file_);
  if (size == 0) return ScriptBytes::ofText({});
  auto mapped = mapFile(std::move(file), size);
  const char* const data = static_cast<const char*>(mapped.get());
  return {std::move(mapped), {data, data ? size : 0}};
}

}  // namespace standin
