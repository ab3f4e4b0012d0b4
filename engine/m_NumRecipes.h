// Log-gamma (six-term Lanczos series) and the gamma function.
#pragma once

namespace m_NumRecipes {

double gammln(double xx);
double Gamma(double x);

} // namespace m_NumRecipes
