#pragma once
namespace Velnor::Proc::Kernels { double PixelateScale(double strength, unsigned int width, unsigned int height); }
