#pragma once
#include "Proc/Effects/Lumetta/Kernels/ByteTables.h"
namespace Velnor::Proc::Kernels { Table BalanceTable(int c, int grey); }
