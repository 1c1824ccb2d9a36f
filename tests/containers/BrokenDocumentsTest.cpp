// SPDX-License-Identifier: MIT
#include "CapturedLog.h"
#include "DocumentFixture.h"
#include "SmallStack.h"

namespace Zorvan::AttributeContainer::Testing {

TEST(BrokenDocumentsTest, ContainersNestTo256LevelsOnAStackOf1MiB) {
    CapturedLog const unheard{0};
    for (char const* kind : {"AttrContainer", "Object", "None", "Child"})
        for (int depth : {255, 256, 3000}) {
            bool const isChild = std::string(kind) == "Child";
            std::string opening = part("r");
            std::string closing;
            if (!isChild)
                opening.resize(opening.size() - 2);
            for (int i = 0; i < depth; ++i) {
                opening += isChild ? "Child {\n\"Object\" \"c\"\n" + part("c")
                                   : "SubContainer {\n\"" + std::string(kind) + "\" \"f\"\nAttrContainer {\n";
                closing += isChild ? "}\n" : "}\n}\n";
            }
            std::string const text = opening + closing + (isChild ? "" : "}\n");
            runOnSmallStack([&] {
                auto const root = Object::create();
                Result const result = read(*root, text);
                EXPECT_EQ(verdict(result), depth == 255 ? "ok" : "StreamFailure") << kind << depth;
                if (result)
                    EXPECT_EQ(result->getInfos().count("Description"), 1u);
                else
                    expectStable(*root, "ok");
            });
        }
}

} // namespace Zorvan::AttributeContainer::Testing
