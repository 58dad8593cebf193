// The abstract interface through which the plug-in describes a scene.
//
// The order of the virtual functions is a binary contract: slot n stands at index n of the virtual table in every
// build, since a live-link library that another compiler built hands objects of this class to the plug-in. Hence
//  - slot 0 is an ordinary function of the shape of a deleting destructor; a C++ virtual destructor would take two
//    entries with one compiler and one with another;
//  - no two functions share a name, because some compilers reorder overloads.
// Strings are 8-bit and zero-terminated. A block that an operation begins is closed by its matching end operation.
#pragma once

namespace rendara {

// The type of a value that is handed to `parameter` and `arrayValue`.
enum SceneValueType : int {
  kFloat3 = 1,      // three floats: a vector or a colour
  kFloat4 = 2,      // four floats
  kFloat = 3,       // one float
  kDouble = 4,      // one double
  kDouble3 = 5,     // three doubles
  kInt = 6,         // one 32-bit signed integer
  kBool = 7,        // one boolean, held as a 32-bit integer
  kMatrix = 9,      // sixteen doubles
  kString = 10,     // the value is the character pointer itself
  kCapture = 11,    // the value points to a pointer to a CaptureBuffer
  kStringRef = 13,  // the value points to a character pointer
  kFloat2 = 14,
  kFloat4b = 15,
  kInt2 = 16,
  kInt3 = 17,
  kInt4 = 18,
  kArrayFlag = 0x8000  // added to a type: an array of it; the value points to a SceneArray
};

// The array flag added to an element type.
constexpr int arrayOf(SceneValueType element) { return static_cast<int>(element) | static_cast<int>(kArrayFlag); }

// An array handed over whole: its first element and its signed 32-bit element count. The data stay the caller's.
struct SceneArray {
  const void* data;
  int count;
};

// The text of a block that is captured instead of written. Its owner is the scene object that made it.
struct CaptureBuffer {
  char label[6] = "ERROR";
  char* data = nullptr;  // not terminated
  int length = 0;
  int capacity = -1;           // -1: nothing allocated yet
  bool holdsRawBytes = false;  // bytes of explicit length were appended; the content is no longer plain text
};

class vntScene_api {
 public:
  // Slot 0. Bit 0 of the flag also frees the object. The result is the object's address.
  virtual void* destroy(unsigned deletingFlag) = 0;
  virtual void reserved1() = 0;
  virtual bool render() = 0;
  // Slots 3 to 5 have a meaning on a live link only.
  virtual bool connect(const char* host, int port, int mode);
  virtual bool endScene();
  virtual bool reserved5(int first, int second, int third);
  virtual void transform(const double* matrix, bool set) = 0;
  virtual void scale(const double* x, const double* y, const double* z) = 0;
  virtual void rotate(const double* x, const double* y, const double* z) = 0;
  virtual void translate(const double* x, const double* y, const double* z) = 0;
  virtual void motion(const double* matrix, float time) = 0;  // slot 10
  virtual bool beginGroup(const char* name, bool noDefine) = 0;
  virtual void endGroup() = 0;
  virtual bool beginFrame(int frame) = 0;
  virtual void endBlock() = 0;
  virtual bool defineMatrix(const char* name) = 0;
  virtual void endMatrix() = 0;
  virtual unsigned identity17(unsigned value) = 0;
  virtual bool beginOptions() = 0;
  virtual void endOptions() = 0;
  virtual bool beginCamera(const char* nameOrNull) = 0;  // slot 20
  virtual void endCamera() = 0;
  virtual bool modifyCamera(const char* name) = 0;
  virtual bool beginImage() = 0;
  virtual void endImage() = 0;
  virtual bool beginOutput(const char* first, const char* second, const char* third) = 0;
  virtual void endOutput() = 0;
  virtual bool beginObject(const char* name, bool noDefine) = 0;
  virtual void endObject() = 0;
  virtual void setObjectFlag(unsigned mask, bool on) = 0;
  virtual unsigned identity30(unsigned value) = 0;  // slot 30
  virtual bool modifyObject(const char* name) = 0;
  virtual void reserved32(int first, int second) = 0;
  virtual bool beginLight(const char* name, int ignored) = 0;
  virtual bool modifyLight(const char* name) = 0;
  virtual void endLight() = 0;
  virtual void globalPhotons(int count) = 0;
  virtual void causticPhotons(int count) = 0;
  virtual void volumePhotons(int count) = 0;
  virtual bool defineGeometry(const char* type, const char* name) = 0;
  virtual bool beginGeometry(const char* type) = 0;  // slot 40
  virtual void endGeometry() = 0;
  virtual int reserved42() = 0;
  virtual bool beginAccel(const char* name) = 0;
  virtual void endAccel() = 0;
  virtual bool reserved45(int value) = 0;
  virtual void reserved46() = 0;
  virtual bool instance(const char* name) = 0;
  virtual bool beginAnimation(const char* first, const char* second) = 0;
  virtual int endAnimation() = 0;
  virtual bool beginMaterial(const char* name, bool noDefine) = 0;  // slot 50
  virtual bool useMaterial(const char* name, int ignored) = 0;
  virtual void endMaterial() = 0;
  virtual void shader(int kind, const CaptureBuffer* bufferOrNull) = 0;
  virtual bool modifyMaterial(const char* name) = 0;
  virtual bool beginShader(const char* nameOrNull, const char* type) = 0;
  virtual void endShader(int ignored) = 0;
  virtual bool reserved57(int value) = 0;
  virtual CaptureBuffer* currentCapture() = 0;
  virtual void pushCapture() = 0;
  virtual void popCapture() = 0;  // slot 60
  virtual bool beginLoad(const char* name) = 0;
  virtual void endLoad() = 0;
  virtual void attribute(const char* first, const char* second) = 0;
  virtual void writeFormatted(const char* format, ...) = 0;
  virtual void setOutputMode(unsigned mode, int ignored) = 0;
  virtual void reserved66(int value) = 0;
  virtual void progress(const char* name, float fraction) = 0;
  virtual void icon(const void* bytes, int count) = 0;
  virtual void blob(const char* key, const void* bytes, int count) = 0;
  virtual void id(unsigned value) = 0;  // slot 70
  virtual void flags(unsigned value) = 0;
  virtual bool parameter(const char* name, int type, const void* value) = 0;
  virtual bool parameterText(const char* name, const CaptureBuffer* buffer) = 0;
  virtual void arrayValue(int type, const void* value) = 0;
  virtual int arrayVersion75() = 0;
  virtual bool beginArray(const char* name) = 0;
  virtual void endArray() = 0;
  virtual int arrayVersion78(int value) = 0;

 protected:
  vntScene_api() = default;
  vntScene_api(const vntScene_api&) = default;
  vntScene_api& operator=(const vntScene_api&) = default;
  ~vntScene_api() = default;
};

inline bool vntScene_api::connect(const char*, int, int) { return false; }
inline bool vntScene_api::endScene() { return false; }
inline bool vntScene_api::reserved5(int, int, int) { return false; }

}  // namespace rendara
