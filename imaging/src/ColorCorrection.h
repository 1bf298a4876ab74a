// Colour correction functors: a 3x3 matrix in float or fixed point, gamma,
// and gamma with a matrix, plain or through lookup tables. Each corrects one
// pixel in place; a functor is read-only once built, so threads may share it.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace qrx {

// The parameters a functor is built from.
struct ColorCorrectionPrm {
    uint32_t word = 0;
    float matrix[9] = {};
    float gamma = 1.0f;
    float maximum = 255.0f;
    float operator[](int i) const { return matrix[i]; }
};

class CorrectionBase {
public:
    enum enCorrectionType : uint32_t {
        kEmpty = 0,
        kMatrix = 1,
        kMatrixInt8 = 2,
        kMatrixInt16 = 3,
        kGamma = 4,
        kGammaMatrix = 5,
        kGammaMatrixLUT8 = 6,
        kGammaMatrixLUT16 = 7,
    };
};

// The root of every functor: its type picks the class to apply and delete.
class FunctorBase {
public:
    explicit FunctorBase(CorrectionBase::enCorrectionType aType) : type(aType) {}
    const CorrectionBase::enCorrectionType type;
};

// Every functor offers Apply8 for 8-bit and Apply16 for 16-bit samples. The
// matrix forms read their rows with the second coefficient on blue and the
// third on green: out = m0 * R + m1 * B + m2 * G, and so on for G and B.
class EmptyFunctor : public FunctorBase {
public:
    EmptyFunctor() : FunctorBase(CorrectionBase::kEmpty) {}
    void Apply8(uint32_t&, uint32_t&, uint32_t&) const {}
    void Apply16(uint32_t&, uint32_t&, uint32_t&) const {}
};

class ColorCorrectionMatrix : public FunctorBase {
public:
    explicit ColorCorrectionMatrix(const ColorCorrectionPrm& aPrm)
        : FunctorBase(CorrectionBase::kMatrix), prm(aPrm) {}
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const { Apply(r, g, b, 255); }
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const { Apply(r, g, b, 65535); }
    void Apply(uint32_t& r, uint32_t& g, uint32_t& b, uint32_t aTop) const;
    const ColorCorrectionPrm prm;
};

// Coefficients in fixed point with 10 fraction bits.
class ColorCorrectionMatrixInt8 : public FunctorBase {
public:
    explicit ColorCorrectionMatrixInt8(const ColorCorrectionPrm& aPrm);
    // A result with any bit of 0xff00 set saturates; otherwise its low byte stays.
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const;
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const;
    int32_t m[9];
};

class ColorCorrectionMatrixInt16 : public FunctorBase {
public:
    explicit ColorCorrectionMatrixInt16(const ColorCorrectionPrm& aPrm);
    // Saturates only on bits of 0xffff0000, also for 8-bit samples, where a
    // result of 256 to 65535 keeps its low byte.
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const;
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const;
    int32_t m[9];
};

class ColorCorrectionGamma : public FunctorBase {
public:
    explicit ColorCorrectionGamma(const ColorCorrectionPrm& aPrm)
        : FunctorBase(CorrectionBase::kGamma), prm(aPrm) {}
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const { Apply(r, g, b, 255); }
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const { Apply(r, g, b, 65535); }
    void Apply(uint32_t& r, uint32_t& g, uint32_t& b, uint32_t aTop) const;
    const ColorCorrectionPrm prm;
};

// Gamma on each channel, then the matrix.
class ColorCorrectionGammaMatrix : public FunctorBase {
public:
    explicit ColorCorrectionGammaMatrix(const ColorCorrectionPrm& aPrm)
        : FunctorBase(CorrectionBase::kGammaMatrix), prm(aPrm) {}
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const { Apply(r, g, b, 255); }
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const { Apply(r, g, b, 65535); }
    void Apply(uint32_t& r, uint32_t& g, uint32_t& b, uint32_t aTop) const;
    const ColorCorrectionPrm prm;
};

// Row v holds the nine matrix coefficients times the gamma-corrected v, in
// fixed point; a pixel is three row lookups and sums.
class ColorCorrectionGammaMatrixLUT8 : public FunctorBase {
public:
    explicit ColorCorrectionGammaMatrixLUT8(const ColorCorrectionPrm& aPrm);
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const;
    // 16-bit samples look up their upper eight bits and come back widened.
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const;
    std::array<std::array<int32_t, 9>, 256> rows;
};

// Rows for every value up to the maximum sample value.
class ColorCorrectionGammaMatrixLUT16 : public FunctorBase {
public:
    explicit ColorCorrectionGammaMatrixLUT16(const ColorCorrectionPrm& aPrm);
    void Apply8(uint32_t& r, uint32_t& g, uint32_t& b) const;
    void Apply16(uint32_t& r, uint32_t& g, uint32_t& b) const;
    std::vector<std::array<int32_t, 9>> rows;
};

// Calls aBody with the functor as its real class.
template <class Body> void VisitCorrection(const FunctorBase& aFunctor, Body&& aBody) {
    switch (aFunctor.type) {
    case CorrectionBase::kEmpty:
        return aBody(static_cast<const EmptyFunctor&>(aFunctor));
    case CorrectionBase::kMatrix:
        return aBody(static_cast<const ColorCorrectionMatrix&>(aFunctor));
    case CorrectionBase::kMatrixInt8:
        return aBody(static_cast<const ColorCorrectionMatrixInt8&>(aFunctor));
    case CorrectionBase::kMatrixInt16:
        return aBody(static_cast<const ColorCorrectionMatrixInt16&>(aFunctor));
    case CorrectionBase::kGamma:
        return aBody(static_cast<const ColorCorrectionGamma&>(aFunctor));
    case CorrectionBase::kGammaMatrix:
        return aBody(static_cast<const ColorCorrectionGammaMatrix&>(aFunctor));
    case CorrectionBase::kGammaMatrixLUT8:
        return aBody(static_cast<const ColorCorrectionGammaMatrixLUT8&>(aFunctor));
    case CorrectionBase::kGammaMatrixLUT16:
        return aBody(static_cast<const ColorCorrectionGammaMatrixLUT16&>(aFunctor));
    }
}

// Handles: made, checked and ended through a process-wide set of live
// functors. Making one fails (null) when the set's lock can't be had in 100
// milliseconds; ending an unknown or null handle gives -1.
FunctorBase* createMatrixCorrectionHandle(const float* aMatrix);
FunctorBase* createMatrixInt8CorrectionHandle(const float* aMatrix);
FunctorBase* createMatrixInt16CorrectionHandle(const float* aMatrix);
FunctorBase* createGammaCorrectionHandle(float aGamma, float aMaximum);
FunctorBase* createGammaMatrixCorrectionHandle(const float* aMatrix, float aGamma, float aMaximum);
FunctorBase* createGammaMatrixLUT8CorrectionHandle(const float* aMatrix, float aGamma,
                                                   float aMaximum);
FunctorBase* createGammaMatrixUT16CorrectionHandle(const float* aMatrix, float aGamma,
                                                   float aMaximum);
FunctorBase* createGammaLUT8CorrectionHandle(float aGamma, float aMaximum);
FunctorBase* createGammaLUT16CorrectionHandle(float aGamma, float aMaximum);
int destroyCorrectionHandle(FunctorBase* aObject);
// Runs aBody(functor) while the handle is known to be live; false for an unknown handle.
bool WithLiveHandle(const void* aHandle, void (*aBody)(const FunctorBase&, void*), void* aContext);

} // namespace qrx
