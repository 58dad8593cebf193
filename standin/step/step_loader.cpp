#include "standin/step/step_loader.h"

#include <Standard_Failure.hxx>
#include <exception>

#include "standin/step/product_structure.h"
#include "standin/step/step_file.h"
#include "standin/windows/code_page.h"

namespace standin {

LoadResult loadStep(Session& session, const std::filesystem::path& path, const LoadProgress& progress) {
  StepFile file;
  std::string error = readStepFile(path, progress, file);
  if (!error.empty()) return {nullptr, std::move(error)};
  LoadResult result;
  try {
    result = buildModels(session, file, wideFromUtf8(path.stem().string()));
  } catch (const Standard_Failure& failure) {
    return {nullptr, std::string("the shapes of the STEP file are damaged: ") + failure.GetMessageString()};
  } catch (const std::exception& failure) {
    return {nullptr, std::string("the STEP file cannot be opened: ") + failure.what()};
  }
  if (result.model == nullptr) return result;
  session.current = result.model;
  session.mode = result.model->type == PRO_MDL_ASSEMBLY ? PRO_MODE_ASSEMBLY : PRO_MODE_PART;
  if (progress) progress(1.0);
  return result;
}

}  // namespace standin
