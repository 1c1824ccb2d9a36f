// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Files.h"
#include "Report.h"

#include <algorithm>

namespace kxmodel {

namespace {

Status checkOne(std::string const& file) {
    std::string text;
    try {
        text = readAll(file);
    } catch (FileError const& error) {
        printMessage(error.file(), error.what());
        return Status::Failed;
    }
    std::string const name = inputName(file);
    Document const document = readDocument(text);
    Report(name, text).print(document);
    switch (document.outcome) {
    case Outcome::Good:
        return Status::Good;
    case Outcome::Warnings:
        return Status::Warnings;
    default:
        return Status::Failed;
    }
}

} // namespace

Status check(std::vector<std::string> const& files) {
    Status worst = Status::Good;
    for (std::string const& file : files)
        worst = std::max(worst, checkOne(file));
    return worst;
}

} // namespace kxmodel
