#include "pages/ssse/ethnic_groups.h"

#include <cstdlib>

const std::array<EthnicGroup, 57> kEthnicGroups{{
    {1, "汉族"},        {2, "蒙古族"},    {3, "回族"},      {4, "藏族"},      {5, "维吾尔族"},    {6, "苗族"},
    {7, "彝族"},        {8, "壮族"},      {9, "布依族"},    {10, "朝鲜族"},   {11, "满族"},       {12, "侗族"},
    {13, "瑶族"},       {14, "白族"},     {15, "土家族"},   {16, "哈尼族"},   {17, "哈萨克族"},   {18, "傣族"},
    {19, "黎族"},       {20, "傈傈族"},   {21, "佤族"},     {22, "畲族"},     {23, "高山族"},     {24, "拉祜族"},
    {25, "水族"},       {26, "东乡族"},   {27, "纳西族"},   {28, "景颇族"},   {29, "柯尔克孜族"}, {30, "土族"},
    {31, "达翰尔族"},   {32, "仫佬族"},   {33, "羌族"},     {34, "布朗族"},   {35, "撒拉族"},     {36, "毛南族"},
    {37, "仡佬族"},     {38, "锡伯族"},   {39, "阿昌族"},   {40, "普米族"},   {41, "塔吉克族"},   {42, "怒族"},
    {43, "乌孜别克族"}, {44, "俄罗斯族"}, {45, "鄂温克族"}, {46, "德昂族"},   {47, "保安族"},     {48, "裕固族"},
    {49, "京族"},       {50, "塔塔尔族"}, {51, "独龙族"},   {52, "鄂伦春族"}, {53, "赫哲族"},     {54, "门巴族"},
    {55, "珞巴族"},     {56, "基诺族"},   {99, "其他"},
}};

const char *ethnicGroupName(const char *code)
{
    // Kept wide: a number past 32 bits (strtol answers one past its own range with the nearest it has) is no code.
    const long number = std::strtol(code, nullptr, 10);
    for (const EthnicGroup &group : kEthnicGroups)
        if (group.code == number)
            return group.name;
    return "其他";
}
