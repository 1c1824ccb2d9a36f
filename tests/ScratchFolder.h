// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>
#include <thread>

/// A folder that is empty at first and goes with this object.
class ScratchFolder {
public:
    ScratchFolder()
        : path(std::filesystem::path(testing::TempDir()) / ("kx-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(path);
    }
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;
    ~ScratchFolder() {
        // A program that has just ended in the folder may hold it for a moment, on some systems.
        std::error_code error;
        for (int tries = 0; tries < 500; ++tries) {
            std::filesystem::remove_all(path, error);
            if (!error)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "the folder of the test stays: " << error.message();
    }

    std::filesystem::path const path;
};

inline std::string contentOf(std::filesystem::path const& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void put(std::filesystem::path const& file, std::string const& content) {
    std::ofstream(file, std::ios::binary) << content;
}
