#pragma once

#include <cstdint>

#include "data/data.h"
#include "data/datastruct.h"

// What the whole-array operations do, step by step: on bare values one element after the other, and on whole records of
// either generation, which are taken to be sound.
namespace korvale::reference {

/// The least and the greatest value of each component of values[count][dim], by strict comparisons from element 0 on.
void bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest);

/// Applies `m` to `count` points; `to` may be `from`.
void carry_points(const double (*m)[4], const double* from, int64_t count, double* to);

void mix(const double* a, const double* b, double wa, double wb, int64_t n, double* to);

void mix_four(const double* a, const double* b, const double* c, const double* d, const double* weights, int64_t n,
              double* to);

int cat(const Data* first, const Data* second, Data* output);
int cat(const DATAstruct* first, const DATAstruct* second, DATAstruct* output);

int copy(const Data* source, Data* output);
int copy(const DATAstruct* source, DATAstruct* output);

int mix(const Data* a, const Data* b, double wa, double wb, Data* output);
int mix(const DATAstruct* a, const DATAstruct* b, double wa, double wb, DATAstruct* output);

int mix_four(const Data* a, const Data* b, const Data* c, const Data* d, const double* weights, Data* output);
int mix_four(const DATAstruct* a, const DATAstruct* b, const DATAstruct* c, const DATAstruct* d, const double* weights,
             DATAstruct* output);

int bounds(const Data* source, Data* output);
int bounds(const DATAstruct* source, DATAstruct* output);

int bbox(const Data* source, Data* box);
int bbox(const DATAstruct* source, DATAstruct* box);

void transform(const double (*m)[4], const Data* source, Data* output);
void transform(const double (*m)[4], const DATAstruct* source, DATAstruct* output);

void reverse(Data* d);
void reverse(DATAstruct* d);

} // namespace korvale::reference
