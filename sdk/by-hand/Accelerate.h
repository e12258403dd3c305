// By hand: Apple's reference pages for vImage. No typed binding carries more than these names, so
// they are compared by name alone; a Mac's compiler is the first to see whether the types hold.
#include <stddef.h>
#include <stdint.h>
typedef unsigned long vImagePixelCount;
typedef ptrdiff_t vImage_Error;
typedef uint32_t vImage_Flags;
typedef uint8_t Pixel_8;
typedef struct vImage_Buffer {
  void *data;
  vImagePixelCount height;
  vImagePixelCount width;
  size_t rowBytes;
} vImage_Buffer;
typedef struct vImage_YpCbCrPixelRange {
  int32_t Yp_bias;
  int32_t CbCr_bias;
  int32_t YpRangeMax;
  int32_t CbCrRangeMax;
  int32_t YpMax;
  int32_t YpMin;
  int32_t CbCrMax;
  int32_t CbCrMin;
} vImage_YpCbCrPixelRange;
typedef struct vImage_YpCbCrToARGBMatrix {
  float Yp;
  float Cr_R;
  float Cr_G;
  float Cb_G;
  float Cb_B;
} vImage_YpCbCrToARGBMatrix;
typedef struct vImage_YpCbCrToARGB {
  uint8_t __attribute__((aligned(16))) opaque[128];
} vImage_YpCbCrToARGB;
typedef enum vImageYpCbCrType : uint32_t { kvImage420Yp8_CbCr8 = 4 } vImageYpCbCrType;
typedef enum vImageARGBType : uint32_t { kvImageARGB8888 = 0 } vImageARGBType;
enum { kvImageNoError = 0, kvImageNoFlags = 0 };
#ifdef __cplusplus
extern "C" {
#endif
vImage_Error vImageConvert_YpCbCrToARGB_GenerateConversion(
    const vImage_YpCbCrToARGBMatrix *matrix, const vImage_YpCbCrPixelRange *pixelRange,
    vImage_YpCbCrToARGB *outInfo, vImageYpCbCrType inYpCbCrType, vImageARGBType outARGBType,
    vImage_Flags flags) __attribute__((availability(macos, introduced = 10.10)));
vImage_Error vImageConvert_420Yp8_CbCr8ToARGB8888(
    const vImage_Buffer *srcYp, const vImage_Buffer *srcCbCr, const vImage_Buffer *dest,
    const vImage_YpCbCrToARGB *info, const uint8_t permuteMap[4], uint8_t alpha,
    vImage_Flags flags) __attribute__((availability(macos, introduced = 10.10)));
#ifdef __cplusplus
}
#endif
