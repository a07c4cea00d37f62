// Tooth lists as the INI files hold them: FDI numbers separated by commas.
#pragma once
#include <string>
#include <vector>

// What an empty last piece means (after a trailing comma, or the whole of an
// empty list). Take sections have always counted it, as tooth 0; drop
// positions ignore it. Empty pieces between commas are tooth 0 under both.
enum class TrailingComma { CountsAsToothZero, AddsNothing };

std::vector<int> ParseToothList(const std::string& text, TrailingComma rule);
