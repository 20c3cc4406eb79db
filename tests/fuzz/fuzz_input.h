#pragma once

// Takes a fuzzer's bytes apart into the pieces a target needs.

#include <stddef.h>
#include <stdint.h>

#include <string>

class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return size_ == 0; }

    uint8_t Byte() {
        if (size_ == 0) return 0;
        --size_;
        return *data_++;
    }

    // Two bytes, high one first.
    uint16_t Word() {
        const uint16_t high = Byte();
        return static_cast<uint16_t>(high << 8 | Byte());
    }

    // Up to |max| bytes, the count taken from the input first.
    std::string Bytes(size_t max) { return Take(max == 0 ? 0 : Word() % (max + 1)); }

    std::string Rest() { return Take(size_); }

  private:
    std::string Take(size_t wanted) {
        const size_t n = wanted < size_ ? wanted : size_;
        std::string out(reinterpret_cast<const char*>(data_), n);
        data_ += n;
        size_ -= n;
        return out;
    }

    const uint8_t* data_;
    size_t size_;
};

#define FUZZ_CHECK(condition)                                                                  \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            __builtin_printf("property failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__); \
            __builtin_trap();                                                                  \
        }                                                                                      \
    } while (0)
