// placeholder
#include <gtest/gtest.h>
