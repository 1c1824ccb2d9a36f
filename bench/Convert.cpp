// SPDX-License-Identifier: MIT

// What the conversion of a large document is measured against: bench_convert MEGABYTES OUT writes a document
// of so many megabytes in text to OUT, and says in JSON what it costs the library alone to read it and to
// write it as XML, in seconds of processor time, and how many bytes the tree takes.

#include "Memory.h"
#include "Timer.h"
#include "Workload.h"
#include "contenders/Kx.h"

#include <fstream>
#include <iostream>

namespace bench {

namespace {

constexpr char title[] = "bench";

/// The values that make a node large; what it has beside its name takes about 600 bytes of a document.
std::shared_ptr<kx::Object> objectOf(Node const& node) {
    auto object = kx::Object::create();
    expectGood(object->setName(node.name, 0));
    auto const add = [&]<class T>(char const* name, T const& value) {
        object->addAttribute(std::make_shared<kx::CustAttr<T>>(value), name);
    };
    add("count", node.count);
    add("length", node.length);
    add("label", node.label);
    add("isOpen", node.isOpen);
    add("position", vectorOf(node.position));
    add("id", Zorvan::uuids::uuid(node.id));
    add("samples", node.samples);
    add("tags", node.tags);
    for (Node const& child : node.children)
        object->addChild(objectOf(child), 0);
    return object;
}

std::string writtenAs(kx::ModelFormat::Format rendering, kx::Object& root) {
    std::ostringstream out;
    auto const context = std::make_shared<kx::WriteContextBase>(rendering);
    kx::WriteToScope scope(out, context);
    scope.getMof().writeHeader(title, kx::version, true);
    expectGood(root.writeTo(out, context));
    scope.getMof().writeFooter();
    return std::move(out).str();
}

std::shared_ptr<kx::Object> readFrom(std::string const& text) {
    ViewStream in(text);
    auto const context = std::make_shared<kx::ReadContextBase>();
    kx::ReadFromScope scope(in, context);
    std::string readTitle;
    kx::VersionNum formatVersion, rootModelVersion;
    scope.getImf().readHeader(readTitle);
    scope.getImf().readVersion(formatVersion);
    scope.getImf().readRootModelVersion(rootModelVersion);
    auto root = kx::Object::create();
    expectGood(root->readFrom(in, context));
    return root;
}

std::string makeDocument(double megabytes) {
    constexpr std::size_t numSampled = 1'000;
    auto const sizeOf = [](std::size_t numNodes) {
        return writtenAs(kx::ModelFormat::Text, *objectOf(makeTree(numNodes)));
    };
    double const bytesOfNode = static_cast<double>(sizeOf(numSampled).size()) / numSampled;
    return sizeOf(static_cast<std::size_t>(megabytes * 1e6 / bytesOfNode));
}

void run(double megabytes, char const* path) {
    std::string const text = makeDocument(megabytes);
    std::ofstream(path, std::ios::binary) << text;
    forgetFreeMemory();

    std::size_t const before = bytesInUse();
    double const start = processorTime();
    auto const root = readFrom(text);
    double const readTime = processorTime() - start;
    std::size_t const treeBytes = bytesInUse() - before;

    double const middle = processorTime();
    std::string const xml = writtenAs(kx::ModelFormat::XmlV2, *root);
    double const writeTime = processorTime() - middle;
    std::cout << "{\"read\": " << readTime << ", \"write\": " << writeTime
              << ", \"tree_bytes\": " << treeBytes << ", \"text_bytes\": " << text.size()
              << ", \"xml_bytes\": " << xml.size() << "}\n";
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: bench_convert MEGABYTES OUT\n";
        return 2;
    }
    bench::run(std::stod(argv[1]), argv[2]);
}
