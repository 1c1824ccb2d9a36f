// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttributeContainer.h>

int main() { return 0; }
