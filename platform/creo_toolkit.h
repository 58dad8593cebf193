// The operations of the Creo toolkit that the plug-in calls. With RENDARA_VENDOR_TOOLKIT defined the vendor's own
// headers stand in for the declarations of this folder, and no caller changes.
#pragma once

#ifdef RENDARA_VENDOR_TOOLKIT
#include <ProToolkit.h>

#include <ProArray.h>
#include <ProAsmcomp.h>
#include <ProAsmcomppath.h>
#include <ProContour.h>
#include <ProContourdata.h>
#include <ProCurvedata.h>
#include <ProEdge.h>
#include <ProEdgedata.h>
#include <ProFeatType.h>
#include <ProFeature.h>
#include <ProGeomitem.h>
#include <ProGraphic.h>
#include <ProIntfData.h>
#include <ProLayer.h>
#include <ProMdl.h>
#include <ProMdlUnits.h>
#include <ProMessage.h>
#include <ProModelitem.h>
#include <ProQuilt.h>
#include <ProQuiltdata.h>
#include <ProSelection.h>
#include <ProSimprep.h>
#include <ProSimprepdata.h>
#include <ProSolid.h>
#include <ProSurface.h>
#include <ProSurfacedata.h>
#include <ProTessellation.h>
#include <ProUICheckbutton.h>
#include <ProUICmd.h>
#include <ProUIDialog.h>
#include <ProUIInputpanel.h>
#include <ProUILabel.h>
#include <ProUILayout.h>
#include <ProUIPushbutton.h>
#include <ProUIRadiogroup.h>
#include <ProUISeparator.h>
#include <ProUISlider.h>
#include <ProUISpinbox.h>
#include <ProUtil.h>
#include <ProView.h>
#include <ProWstring.h>
#else
#include "platform/creo/appearance.h"
#include "platform/creo/dialog.h"
#include "platform/creo/geometry.h"
#include "platform/creo/interaction.h"
#include "platform/creo/interface_data.h"
#include "platform/creo/layer.h"
#include "platform/creo/model.h"
#include "platform/creo/simprep.h"
#include "platform/creo/types.h"
#include "platform/creo/view.h"
#endif
