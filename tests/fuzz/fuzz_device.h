// A fake device with a sample headend, for a fuzzed run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "support/fake_device.h"

namespace fuzz {

// A QRA-310 with its sample's rows. Its standard streams are collected, its files passing.
class Device : public test::DeviceTest {
  public:
    explicit Device(const std::string& model = "QRA-310");
    test::FakeDevice& files() { return device; }

  private:
    void TestBody() override {}
};

// Ends the program, as a finding, unless it holds.
void require(bool holds, const char* what);

// Takes values from the bytes of an input; zeros when they are used up.
class Bytes {
  public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    [[nodiscard]] bool empty() const { return size_ == 0; }
    std::uint8_t byte();
    // A length and as many bytes.
    std::string text();
    std::int64_t number();

  private:
    const std::uint8_t* data_;
    std::size_t size_;
};

}  // namespace fuzz

// What the fuzzer and the replay call with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
