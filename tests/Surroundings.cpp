// SPDX-License-Identifier: MIT
// Part of every test program: with KX_TEST_LOCALE in the environment it runs as an application does that
// takes its global locale from there. Surroundings that are not in force would show nothing: they are no
// reason to pass, so the program ends at once.
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <locale>
#include <string>

namespace {

bool isInForce(std::string const& name) {
    bool const hasComma = std::localeconv()->decimal_point[0] == ',';
    std::time_t const start = 0;
    int const hourOfWorld = std::gmtime(&start)->tm_hour;
    return std::locale().name() == name && hasComma == (name != "C") &&
           std::localtime(&start)->tm_hour != hourOfWorld;
}

struct GlobalLocale {
    GlobalLocale() {
        if (char const* const name = std::getenv("KX_TEST_LOCALE")) {
            std::locale::global(std::locale(""));
            if (!std::setlocale(LC_ALL, "") || !isInForce(name))
                std::abort();
        }
    }
} const globalLocale;

} // namespace
