#include "platform/imageio/jpeg/Input.h"

namespace kestrine::jpeg {

namespace {

Input& inputOf(j_decompress_ptr info) { return *reinterpret_cast<Input*>(info->src); }

void nothingToDo(j_decompress_ptr) {}

boolean fill(j_decompress_ptr info) {
    Input& input = inputOf(info);
    std::size_t count = input.reader->readAt(input.offset, input.buffer);
    input.offset += count;
    if (count == 0) {
        input.hasEnded = true;
        input.buffer[0] = 0xFF;
        input.buffer[1] = JPEG_EOI;
        count = 2;
    }
    input.manager.next_input_byte = input.buffer.data();
    input.manager.bytes_in_buffer = count;
    return TRUE;
}

void skip(j_decompress_ptr info, long count) {
    Input& input = inputOf(info);
    if (count <= 0)
        return;
    const auto distance = static_cast<std::size_t>(count);
    const std::size_t buffered = std::min(distance, input.manager.bytes_in_buffer);
    input.manager.next_input_byte += buffered;
    input.manager.bytes_in_buffer -= buffered;
    input.offset += distance - buffered;
}

} // namespace

void Input::attach(jpeg_decompress_struct& info, const ByteReader& bytes) {
    reader = &bytes;
    offset = 0;
    hasEnded = false;
    manager.init_source = nothingToDo;
    manager.fill_input_buffer = fill;
    manager.skip_input_data = skip;
    manager.resync_to_restart = jpeg_resync_to_restart;
    manager.term_source = nothingToDo;
    manager.next_input_byte = nullptr;
    manager.bytes_in_buffer = 0;
    info.src = &manager;
}

} // namespace kestrine::jpeg
