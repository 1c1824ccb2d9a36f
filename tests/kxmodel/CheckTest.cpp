// SPDX-License-Identifier: MIT
#include "Program.h"

using namespace kxmodel_test;

namespace {

class Check : public Program {};

TEST_F(Check, CutDocumentsAreReportedAndChangedBytesDoNoHarm) {
    std::string const text =
        header + object("root") + child("Object", "c", object("c")) +
        child("Acme::Pump", "p", object("p", attribute("VecPoly3d", "v", "{ { 1 2 3 }  } "))) +
        child("Object", "d", object("d", attribute("StringArray", "a", "2 \"x\" \"y\"")));
    for (std::string const& document : {text, converted(text, "xml")}) {
        std::vector<std::string> checkOfChanged{"check"};
        for (std::size_t length = 0; length < document.size(); length += 9 + length % 23) {
            std::string const cut = document.substr(0, length);
            Ending const result = run({"check", "-"}, cut);
            // Only a text that ends exactly between two blocks of the top level is a document.
            std::size_t const next = length + (document[length] == '\n' ? 1 : 0);
            bool const isBetweenBlocks = cut.find_last_not_of('\n') == cut.rfind("\n}") + 1 &&
                                         document.substr(next).starts_with("Child {");
            EXPECT_TRUE(isBetweenBlocks ? result.status == 0 || result.status == 1 : result.status == 2)
                << result.status << " for:\n"
                << cut;

            std::string changed = document;
            changed[length] = std::string("{}\"'<> \n0\xff")[length % 10];
            checkOfChanged.push_back(put(std::to_string(length), changed));
        }
        int const status = run(checkOfChanged).status;
        EXPECT_TRUE(status >= 0 && status <= 2) << status;
    }
}

} // namespace
