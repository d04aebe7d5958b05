#pragma once

/// Enters every value viewer and formatter class in KZClassRegistry, so that
/// the viewer table can name them. Calling again is harmless.
void ADRegisterViewerClasses();
