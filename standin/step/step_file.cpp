#include "standin/step/step_file.h"

#include <IFSelect_ReturnStatus.hxx>
#include <Interface_Check.hxx>
#include <Interface_InterfaceModel.hxx>
#include <Interface_ReportEntity.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_ProgressIndicator.hxx>
#include <Message_ProgressScope.hxx>
#include <STEPCAFControl_ExternFile.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPConstruct_ExternRefs.hxx>
#include <STEPControl_Controller.hxx>
#include <Standard_Failure.hxx>
#include <StepRepr_ItemDefinedTransformation.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <StepRepr_RepresentationRelationship.hxx>
#include <TCollection_HAsciiString.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <XSControl_WorkSession.hxx>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>
#include <set>
#include <string_view>
#include <system_error>

namespace standin {

namespace {

namespace fs = std::filesystem;

// Of the whole work, parsing the text takes about this share; the rest is the conversion to shapes.
constexpr double kParseShare = 0.3;

// Takes Open CASCADE's messages off the console while it lives.
class Silence {
 public:
  Silence() : kept_(Message::DefaultMessenger()->Printers()) { Message::DefaultMessenger()->ChangePrinters().Clear(); }
  ~Silence() { Message::DefaultMessenger()->ChangePrinters() = kept_; }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  Message_SequenceOfPrinters kept_;
};

// Keeps Open CASCADE from naming unnamed shapes after their kind, which could not be told from real names.
class NoInventedNames {
 public:
  NoInventedNames() : kept_(XCAFDoc_ShapeTool::AutoNaming()) { XCAFDoc_ShapeTool::SetAutoNaming(false); }
  ~NoInventedNames() { XCAFDoc_ShapeTool::SetAutoNaming(kept_); }
  NoInventedNames(const NoInventedNames&) = delete;
  NoInventedNames& operator=(const NoInventedNames&) = delete;

 private:
  bool kept_;
};

// Hands the position on to the caller's function, and its wish to stop back.
class ProgressBridge : public Message_ProgressIndicator {
 public:
  explicit ProgressBridge(const LoadProgress& progress) : progress_(progress) {}
  Standard_Boolean UserBreak() override { return stopped_; }
  bool stopped() const { return stopped_; }

 protected:
  void Show(const Message_ProgressScope& /*scope*/, const Standard_Boolean /*force*/) override {
    if (progress_ && !stopped_) stopped_ = !progress_(kParseShare + (1.0 - kParseShare) * GetPosition());
  }

 private:
  const LoadProgress& progress_;
  bool stopped_ = false;
};

bool contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

// Looks at the first and last bytes: what is not STEP, or was cut off, never gets as far as the parser.
std::string checkFrame(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) return "no such file";
  if (fs::is_directory(status)) return "is a folder, not a file";
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::string("cannot be read: ") + std::strerror(errno);
  constexpr std::streamoff kFrame = 4096;
  std::string head(static_cast<std::size_t>(kFrame), '\0');
  stream.read(head.data(), kFrame);
  head.resize(static_cast<std::size_t>(stream.gcount()));
  if (head.empty()) return "the file is empty";
  if (!contains(head, "ISO-10303-21")) return "not a STEP file";
  stream.clear();
  stream.seekg(0, std::ios::end);
  const std::streamoff size = stream.tellg();
  stream.seekg(std::max<std::streamoff>(0, size - kFrame));
  std::string tail(static_cast<std::size_t>(kFrame), '\0');
  stream.read(tail.data(), kFrame);
  tail.resize(static_cast<std::size_t>(stream.gcount()));
  if (!contains(tail, "END-ISO-10303-21")) return "the file is cut off: its end mark is missing";
  return {};
}

// Entities that Open CASCADE follows without a look whether they are whole: shapes, placements and colours. Others
// that it did not understand are left out by it and do no harm; real files have some.
bool isVital(const Handle(Standard_Transient) & entity) {
  const std::string_view kind = entity->DynamicType()->Name();
  const auto starts = [kind](std::string_view with) { return kind.substr(0, with.size()) == with; };
  if (entity->IsKind(STANDARD_TYPE(StepRepr_RepresentationItem))) return starts("StepGeom_") || starts("StepShape_");
  return entity->IsKind(STANDARD_TYPE(StepRepr_RepresentationRelationship)) ||
         entity->IsKind(STANDARD_TYPE(StepRepr_ItemDefinedTransformation)) || starts("StepVisual_FillArea") ||
         starts("StepVisual_SurfaceS");
}

std::string damage(std::string reason) {
  std::replace(reason.begin(), reason.end(), '\n', ' ');
  return "the STEP text is damaged: " + reason;
}

// A reference that leads nowhere, or to an entity of a wrong kind, makes Open CASCADE run into null pointers later, so
// the file is refused here.
std::string checkContents(const Handle(XSControl_WorkSession) & session) {
  const Handle(Interface_InterfaceModel) model = session->Model();
  const Handle(Interface_Check) whole = model->GlobalCheck(true);
  if (!whole.IsNull() && whole->NbFails() != 0) return damage(whole->CFail(1));
  for (int i = 1; i <= model->NbEntities(); ++i) {
    if (!model->IsReportEntity(i)) continue;
    const Handle(Interface_ReportEntity) report = model->ReportEntity(i);
    const Handle(Interface_Check) check = report->Check();
    if (check->HasFailed() && isVital(report->Concerned())) {
      return damage(std::string(model->StringLabel(model->Value(i))->ToCString()) + ": " + check->CFail(1));
    }
  }
  return {};
}

// Looks through the files that a file refers to, at whatever depth, before any shape is made.
std::string checkReferences(const Handle(XSControl_WorkSession) & session, const fs::path& folder,
                            std::set<std::string>& seen) {
  STEPConstruct_ExternRefs references(session);
  references.LoadExternRefs();
  for (int i = 1; i <= references.NbExternRefs(); ++i) {
    const char* const text = references.FileName(i);
    const std::string name = text == nullptr ? "" : text;
    if (name.empty() || !seen.insert(name).second) continue;
    const std::string place = "refers to " + name + ": ";
    std::string error = checkFrame(folder / name);
    if (!error.empty()) return place + error;
    STEPControl_Reader reader;
    if (reader.ReadFile((folder / name).c_str()) != IFSelect_RetDone) return place + "the STEP text cannot be read";
    error = checkContents(reader.WS());
    if (!error.empty()) return place + error;
    error = checkReferences(reader.WS(), folder, seen);
    if (!error.empty()) return error;
  }
  return {};
}

std::string checkLoadedReferences(const STEPCAFControl_Reader& reader) {
  using ExternFiles = NCollection_DataMap<TCollection_AsciiString, Handle(STEPCAFControl_ExternFile)>;
  for (ExternFiles::Iterator it(reader.ExternFiles()); it.More(); it.Next()) {
    if (it.Value()->GetLoadStatus() != IFSelect_RetDone || !it.Value()->GetTransferStatus()) {
      return std::string("refers to ") + it.Key().ToCString() + ": it cannot be read";
    }
  }
  return {};
}

std::string read(const fs::path& path, const LoadProgress& progress, StepFile& file) {
  STEPControl_Controller::Init();
  Interface_Static::SetCVal("xstep.cascade.unit", "MM");
  STEPCAFControl_Reader reader;
  reader.SetNameMode(true);
  reader.SetColorMode(true);
  reader.SetLayerMode(true);
  // What a session has no place for: not read, it cannot fail either.
  reader.SetPropsMode(false);
  reader.SetSHUOMode(false);
  reader.SetGDTMode(false);
  reader.SetMatMode(false);
  reader.SetViewMode(false);
  if (progress && !progress(0.0)) return "stopped";
  if (reader.ReadFile(path.c_str()) != IFSelect_RetDone) return "the STEP text cannot be read";
  std::string broken = checkContents(reader.Reader().WS());
  std::set<std::string> seen = {path.filename().string()};
  if (broken.empty()) broken = checkReferences(reader.Reader().WS(), path.parent_path(), seen);
  if (!broken.empty()) return broken;
  if (progress && !progress(kParseShare)) return "stopped";
  if (reader.NbRootsForTransfer() == 0) return "the STEP file holds no shapes";
  file.unit = lengthUnitOf(reader.ChangeReader());
  file.document = new TDocStd_Document("MDTV-XCAF");
  Handle(ProgressBridge) bridge = new ProgressBridge(progress);
  const bool done = reader.Transfer(file.document, bridge->Start());
  if (bridge->stopped()) return "stopped";
  broken = checkLoadedReferences(reader);
  if (!broken.empty()) return broken;
  return done ? std::string() : "the shapes of the STEP file cannot be read";
}

}  // namespace

std::string readStepFile(const fs::path& path, const LoadProgress& progress, StepFile& file) {
  std::string error = checkFrame(path);
  if (!error.empty()) return error;
  const Silence silence;
  const NoInventedNames noInventedNames;
  try {
    // References of the file to others are resolved against its folder, which must not be relative itself.
    return read(fs::absolute(path), progress, file);
  } catch (const Standard_Failure& failure) {
    return std::string("the shapes of the STEP file cannot be read: ") + failure.GetMessageString();
  } catch (const std::bad_alloc&) {
    return "not enough memory";
  } catch (const std::exception& failure) {
    return std::string("the STEP file cannot be read: ") + failure.what();
  }
}

}  // namespace standin
