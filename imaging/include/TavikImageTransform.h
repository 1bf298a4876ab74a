/*
 * Tavik image transform (libTavikImageTransform.so): image records filled from
 * pixel formats, names or display formats, and transforms between them.
 */
#ifndef TAVIK_IMAGE_TRANSFORM_H
#define TAVIK_IMAGE_TRANSFORM_H

#include <stdint.h>

#include "TavikCommon.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum TvkPixelLayout {
    TvkPixelLayoutMono = 0,
    TvkPixelLayoutMonoPacked = 1,
    TvkPixelLayoutRaw = 2,
    TvkPixelLayoutRawPacked = 3,
    TvkPixelLayoutRGB = 4,
    TvkPixelLayoutBGR = 5,
    TvkPixelLayoutRGBA = 6,
    TvkPixelLayoutBGRA = 7,
    TvkPixelLayoutYUV411 = 8,
    TvkPixelLayoutYUV422 = 9,
    TvkPixelLayoutYUV444 = 10
} TvkPixelLayout;

typedef enum TvkColorSpace {
    TvkColorSpaceUndefined = 0,
    TvkColorSpaceITU_BT709 = 1,
    TvkColorSpaceITU_BT601 = 2
} TvkColorSpace;

/* The first two pixels of the first line. */
typedef enum TvkBayerPattern {
    TvkBayerPatternRGGB = 0,
    TvkBayerPatternGBRG = 1,
    TvkBayerPatternGRBG = 2,
    TvkBayerPatternBGGR = 3,
    TvkBayerPatternNone = 255
} TvkBayerPattern;

/* Display formats a transform can write. */
typedef enum TvkSimpleImageFormat {
    TvkSimpleImageFormatMono8 = 0,
    TvkSimpleImageFormatBGR24 = 1,
    TvkSimpleImageFormatBGRA32 = 2,
    TvkSimpleImageFormatRGB24 = 3,
    TvkSimpleImageFormatRGBA32 = 4,
    TvkSimpleImageFormatMono8Rec709 = 5,
    TvkSimpleImageFormatUYVY = 6,
    TvkSimpleImageFormatMono16 = 7,
    TvkSimpleImageFormatMono16Rec709 = 8,
    TvkSimpleImageFormatBGR48 = 9,
    TvkSimpleImageFormatRGB48 = 10
} TvkSimpleImageFormat;

/* Camera pixel formats (GenICam PFNC codes). */
typedef enum TvkPixelFormatType {
    TvkPixelFormatMono8 = 0x01080001,
    TvkPixelFormatMono10 = 0x01100003,
    TvkPixelFormatMono12 = 0x01100005,
    TvkPixelFormatMono12Packed = 0x010C0006,
    TvkPixelFormatMono14 = 0x01100025,
    TvkPixelFormatMono16 = 0x01100007,
    TvkPixelFormatBayerGR8 = 0x01080008,
    TvkPixelFormatBayerRG8 = 0x01080009,
    TvkPixelFormatBayerGB8 = 0x0108000A,
    TvkPixelFormatBayerBG8 = 0x0108000B,
    TvkPixelFormatBayerGR10 = 0x0110000C,
    TvkPixelFormatBayerRG10 = 0x0110000D,
    TvkPixelFormatBayerGB10 = 0x0110000E,
    TvkPixelFormatBayerBG10 = 0x0110000F,
    TvkPixelFormatBayerGR12 = 0x01100010,
    TvkPixelFormatBayerRG12 = 0x01100011,
    TvkPixelFormatBayerGB12 = 0x01100012,
    TvkPixelFormatBayerBG12 = 0x01100013,
    TvkPixelFormatBayerGR12Packed = 0x010C002A,
    TvkPixelFormatBayerRG12Packed = 0x010C002B,
    TvkPixelFormatBayerGB12Packed = 0x010C002C,
    TvkPixelFormatBayerBG12Packed = 0x010C002D,
    TvkPixelFormatBayerGR16 = 0x0110002E,
    TvkPixelFormatBayerRG16 = 0x0110002F,
    TvkPixelFormatBayerGB16 = 0x01100030,
    TvkPixelFormatBayerBG16 = 0x01100031,
    TvkPixelFormatRgb8 = 0x02180014,
    TvkPixelFormatBgr8 = 0x02180015,
    TvkPixelFormatRgba8 = 0x02200016,
    TvkPixelFormatArgb8 = 0x02200016,
    TvkPixelFormatBgra8 = 0x02200017,
    TvkPixelFormatRgb12 = 0x0230001A,
    TvkPixelFormatRgb16 = 0x02300033,
    TvkPixelFormatYuv411 = 0x020C001E,
    TvkPixelFormatYuv422 = 0x0210001F,
    TvkPixelFormatYuv444 = 0x02180020
} TvkPixelFormatType;

typedef struct TvkPixelInfo {
    uint32_t BitsPerPixel; /* storage per pixel */
    uint32_t BitsUsed;     /* significant bits */
    uint32_t Alignment;
    uint32_t Endianness;   /* 0 little-endian, 1 big-endian */
    uint32_t PixelLayout;  /* TvkPixelLayout */
    uint32_t BayerPattern; /* TvkBayerPattern */
    uint32_t ColorSpace;   /* TvkColorSpace */
} TvkPixelInfo;

typedef struct TvkImageInfo {
    uint32_t Width;
    uint32_t Height;
    uint32_t Stride;
    TvkPixelInfo PixelInfo;
} TvkImageInfo;

/* Size must hold sizeof(TvkImage) before any call. */
typedef struct TvkImage {
    uint32_t Size;
    void* Data;
    TvkImageInfo ImageInfo;
} TvkImage;

typedef enum TvkTransformType {
    TvkTransformTypeDebayerMode = 1,
    TvkTransformTypeColorCorrectionMatrix = 2,
    TvkTransformTypeGammaCorrection = 3
} TvkTransformType;

typedef struct TvkTransformInfo {
    uint32_t TransformType; /* TvkTransformType */
    union {
        uint32_t DebayerMode;
        float Matrix[9];
        float Gamma;
    } Parameter;
} TvkTransformInfo;

/* Pixel format queries: TvkErrorBadParameter for an unknown code or a null output. */
TVK_EXPORT TvkError_t TvkBitsPerPixel(uint32_t* pBitsPerPixel, uint32_t pixelFormat);
TVK_EXPORT TvkError_t TvkBitsPerPixelUsed(uint32_t* pBitsUsed, uint32_t pixelFormat);
TVK_EXPORT TvkError_t TvkGetBayerPattern(uint32_t* pBayerPattern, uint32_t pixelFormat);
TVK_EXPORT TvkError_t TvkGetPixelLayout(uint32_t* pPixelLayout, uint32_t pixelFormat);
TVK_EXPORT TvkError_t TvkGetColorSpace(uint32_t* pColorSpace, uint32_t pixelFormat);
TVK_EXPORT TvkError_t TvkHasBayerPattern(TvkBool_t* pHasPattern, uint32_t pixelFormat);
TVK_EXPORT TvkError_t TvkIsColor(TvkBool_t* pIsColor, uint32_t pixelFormat);

/* Fill an image record's description. */
TVK_EXPORT TvkError_t TvkSetImageInfoFromPixelFormat(uint32_t pixelFormat, uint32_t width,
                                                     uint32_t height, TvkImage* pImage);
TVK_EXPORT TvkError_t TvkSetImageInfoOutput(uint32_t simpleImageFormat, uint32_t width,
                                            uint32_t height, TvkImage* pImage);
/* A display format name ("BGR24") or a pixel format name ("PixelFormatMono8",
   optionally with a "Tvk" prefix), in any case. */
TVK_EXPORT TvkError_t TvkSetImageInfoFromString(const char* pText, uint32_t stringLength,
                                                uint32_t width, uint32_t height, TvkImage* pImage);

/* Transforms source into destination (same size; Size fields set). The
   parameters may choose a debayer mode or a colour correction matrix (which
   takes precedence); gamma parameters are not consulted. */
TVK_EXPORT TvkError_t TvkImageTransform(const TvkImage* source, TvkImage* destination,
                                        const TvkTransformInfo* parameter, uint32_t parameterCount);
/* Debayer modes: 0 "2x2", 1 "3x3", 2 "2x2 LCAA", 3 "2x2 LCAA+V", 4 "2x2 YUV422". */
TVK_EXPORT TvkError_t TvkSetDebayerMode(uint32_t mode, TvkTransformInfo* pInfo);
/* Nine coefficients, row by row; each row is applied to R, B, G in that order. */
TVK_EXPORT TvkError_t TvkSetColorCorrectionMatrix3x3(const float* pMatrix, TvkTransformInfo* pInfo);
TVK_EXPORT TvkError_t TvkSetGammaCorrection(float gamma, TvkTransformInfo* pInfo);

/* The per-source family; imageFormat is a TvkSimpleImageFormat, bayerPattern
   a TvkBayerPattern. Raw sources need even, non-zero sizes. */
TVK_EXPORT TvkError_t TvkRaw8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                            uint32_t height, uint32_t imageFormat,
                                            uint32_t bayerPattern);
TVK_EXPORT TvkError_t TvkRaw8ImageTransform_3x3(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                                uint32_t height, uint32_t imageFormat,
                                                uint32_t bayerPattern);
TVK_EXPORT TvkError_t TvkRaw8ImageTransform_IntLCAA(uint8_t* pDst, const uint8_t* pSrc,
                                                    uint32_t width, uint32_t height,
                                                    uint32_t imageFormat, uint32_t bayerPattern);
TVK_EXPORT TvkError_t TvkRaw8ImageTransform_IntLCAAV(uint8_t* pDst, const uint8_t* pSrc,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t imageFormat, uint32_t bayerPattern);
TVK_EXPORT TvkError_t TvkRaw8ImageTransform_IntYUV422(uint8_t* pDst, const uint8_t* pSrc,
                                                      uint32_t width, uint32_t height,
                                                      uint32_t imageFormat, uint32_t bayerPattern);
/* Any named mode by its number in TvkGetDeBayeringName's list for 8 bits:
   0 "2x2", 1 "2x2 mono", 2 "3x3", 3 "2x2 YUV422", 4 "2x2 LCAA", 5 "2x2 LCAA+V",
   6 "Single", 7 "3x3 bilin.Mono". */
TVK_EXPORT TvkError_t TvkRaw8DeBayer(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                     uint32_t height, uint32_t imageFormat, uint32_t bayerPattern,
                                     uint32_t functionNr);
/* The mode's text, or "none". */
TVK_EXPORT const char* TvkGetDeBayeringName(uint32_t bitDepth, uint32_t functionNr,
                                            uint32_t interlacedMode);
/* 12-bit packed pairs ("2x2" on the upper eight bits). */
TVK_EXPORT TvkError_t TvkRaw12ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                             uint32_t height, uint32_t imageFormat,
                                             uint32_t bayerPattern);
/* Big-endian 16-bit samples at full range. */
TVK_EXPORT TvkError_t TvkRaw16ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                             uint32_t height, uint32_t imageFormat,
                                             uint32_t bayerPattern);
/* 16-bit samples with bitsUsed significant bits (8 to 16), endianness 0
   little, 1 big; 16-bit outputs keep all bits. */
TVK_EXPORT TvkError_t TvkRaw16ImageTransformEx(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                               uint32_t height, uint32_t imageFormat,
                                               uint32_t alignment, uint32_t bitsUsed,
                                               uint32_t endianness, uint32_t bayerPattern);
TVK_EXPORT TvkError_t TvkY8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                          uint32_t imageFormat);
/* 16-bit mono, big-endian and little-endian; these three return 0 or ~0. */
TVK_EXPORT TvkError_t TvkY16ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                           uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkY16ImageTransformLE(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkY16ImageTransformEx(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat,
                                             uint32_t alignment, uint32_t bitsUsed,
                                             uint32_t endianness, uint32_t bayerPattern);
/* 12-bit packed mono pairs. */
TVK_EXPORT TvkError_t TvkY12ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                           uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkRGB8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                            uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkBGR8ImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t pixelCount,
                                            uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkRGBA8ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkBGRA8ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                             uint32_t pixelCount, uint32_t imageFormat);
/* BT.601 limited range: 4:1:1 as U Y Y V Y Y (pixelCount a multiple of 4),
   4:2:2 as U Y V Y (pixelCount even), 4:4:4 as U Y V. */
TVK_EXPORT TvkError_t TvkYUV411ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                              uint32_t pixelCount, uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkYUV422ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                              uint32_t pixelCount, uint32_t imageFormat);
TVK_EXPORT TvkError_t TvkYUV444ImageTransform(uint8_t* pDst, const uint8_t* pSrc,
                                              uint32_t pixelCount, uint32_t imageFormat);
/* The upper eight bits of each 12-bit packed pixel. */
TVK_EXPORT TvkError_t TvkPacked12BitTo8Bit(uint8_t* pDst, const uint8_t* pSrc, uint32_t XSize,
                                           uint32_t YSize);

/* Interlaced complementary-colour sensors (cyan, yellow, magenta, green).
   cygmPattern: the colours of the first two lines, 0 Cy Ye / Gr Ma, 1 Gr Ma /
   Cy Ye, 2 Cy Ye / Ma Gr, 3 Ma Gr / Cy Ye, repeating every four lines with
   green and magenta trading places. mode: 0 3x3, 1 3x3 to grey, 2 2x2, 3
   binned (two fields, the second from width * height / 2 bytes on). nirMode
   0 or 1 picks the colour mapping. */
TVK_EXPORT TvkError_t TvkCygmImageTransform(uint8_t* pDst, const uint8_t* pSrc, uint32_t width,
                                            uint32_t height, uint32_t imageFormat,
                                            uint32_t cygmPattern, uint32_t mode, uint32_t nirMode);

/* Colour correction handles: a 3x3 matrix (nine floats, rows applied to R, B,
   G), gamma, or gamma then matrix, plain or through lookup tables; maximum is
   the largest sample value. Null on failure. */
typedef void* TvkColorCorrectionHandle;
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionMatrix(const float* pMatrix);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionMatrix_Int8(const float* pMatrix);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionMatrix_Int16(const float* pMatrix);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGamma(float gamma, float maximum);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGammaMatrix(const float* pMatrix,
                                                                        float gamma, float maximum);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGammaMatrix_LUT8(const float* pMatrix,
                                                                             float gamma,
                                                                             float maximum);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGammaMatrix_LUT16(const float* pMatrix,
                                                                              float gamma,
                                                                              float maximum);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGamma_LUT8(float gamma, float maximum);
TVK_EXPORT TvkColorCorrectionHandle TvkCreateColorCorrectionGamma_LUT16(float gamma, float maximum);
/* 0, or -1 for a null or unknown handle. */
TVK_EXPORT int32_t TvkDestroyColorCorrection(TvkColorCorrectionHandle handle);
/* Corrects pixelCount pixels in place; imageFormat 1 to 4 (8-bit) or 9, 10
   (16-bit). */
TVK_EXPORT TvkError_t TvkApplyColorCorrection(TvkColorCorrectionHandle handle, void* pData,
                                              uint32_t pixelCount, uint32_t imageFormat);

/* Flips in place: eFlipMode 1 horizontal, 2 vertical, 3 both; eccColorCode
   is the TvkSimpleImageFormat of the pixels, or 128 for 12-bit packed pairs,
   129 for YUV 4:1:1 (U Y Y V Y Y), 130 for YUV 4:4:4. */
TVK_EXPORT TvkError_t TvkFlip(void* pDst, uint32_t XSize, uint32_t YSize, uint32_t eFlipMode,
                              uint32_t eccColorCode);
TVK_EXPORT TvkError_t TvkFlipVertical(void* pDst, uint32_t BytesPerLine, uint32_t Lines);
/* The scanline length for square pixels from pixels of another aspect, a
   multiple of four. */
TVK_EXPORT TvkError_t TvkGetResampledScanlineLength(uint32_t* pDstXSize, uint32_t SrcXSize,
                                                    float DstPixelSize, float SrcPixelSize);
/* Resamples each of SrcYSize scanlines to DstXSize pixels of BytesPerPixel (1
   to 6) bytes; destination pixel x stands at x * DstPixelSize / SrcPixelSize
   source pixels. RopMode 0 takes the nearest pixel, others interpolate
   between the two neighbours. Pitches are in pixels. */
TVK_EXPORT TvkError_t TvkResampleScanlines(void* pDst, const void* pSrc, uint32_t DstXSize,
                                           uint32_t SrcXSize, uint32_t SrcYSize, float DstPixelSize,
                                           float SrcPixelSize, uint32_t BytesPerPixel,
                                           uint32_t RopMode);
TVK_EXPORT TvkError_t TvkResampleScanlinesEx(void* pDst, const void* pSrc, uint32_t DstXSize,
                                             uint32_t SrcXSize, uint32_t SrcYSize,
                                             uint32_t DstPitch, uint32_t SrcPitch,
                                             float DstPixelSize, float SrcPixelSize,
                                             uint32_t BytesPerPixel, uint32_t RopMode);

TVK_EXPORT TvkError_t TvkGetVersion(uint32_t* pVersion);
TVK_EXPORT TvkError_t TvkGetApiInfoString(uint32_t infoType, char* pName, uint32_t maxLength);
TVK_EXPORT TvkError_t TvkGetErrorInfo(TvkError_t errorCode, char* pText, uint32_t maxLength);

#ifdef __cplusplus
} /* extern "C" */

static_assert(sizeof(TvkPixelInfo) == 28, "TvkPixelInfo layout");
static_assert(sizeof(TvkImageInfo) == 40, "TvkImageInfo layout");
static_assert(sizeof(TvkImage) == 56, "TvkImage layout");
static_assert(sizeof(TvkTransformInfo) == 40, "TvkTransformInfo layout");
#endif

#endif /* TAVIK_IMAGE_TRANSFORM_H */
