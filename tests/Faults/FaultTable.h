// Runs the rows of a table; each file of rows instantiates it.
#pragma once

#include <gtest/gtest.h>

#include "FaultCell.h"

class FaultTable : public testing::TestWithParam<FaultCell> {};

// "Imaging", "hdiutil write .cdr 2+ ENOSPC" -> "ImagingHdiutilWriteCdr2AndLaterENOSPC".
std::string faultCellName(const testing::TestParamInfo<FaultCell>& info);
