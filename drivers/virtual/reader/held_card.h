// A card of the tray as one program holds it: the model, kept in step with the card's file. Other programs may change
// the same card; what this one changes is on disk before its call returns.
#pragma once

#include "drivers/virtual/tray/schema_check.h"
#include "drivers/virtual/tray/tray.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace drivers::reader {

/// `Model` is a card model: made from a description, with description() and changed().
template <class Model>
class HeldCard {
public:
    HeldCard(tray::Tray &tray, std::string id) : m_tray(tray), m_id(std::move(id)), m_file(tray.cardFile(m_id)) {}

    /// Makes the model of what the file holds now, unless that is known already. Returns whether a new model was
    /// made; its volatile state is that of a card just put in. Throws tray::TrayError.
    bool refresh()
    {
        if (m_model != nullptr && !m_file.changed())
            return false;
        m_model.reset();
        m_saved = m_tray.readCard(m_file);
        try {
            m_model = std::make_unique<Model>(m_saved);
        } catch (const std::exception &error) {
            throw tray::TrayError(tray::TrayError::Subject::Card, m_file.path().string() + ": " + error.what());
        }
        return true;
    }

    /// The model that refresh() made.
    Model &model() { return *m_model; }

    /// Writes the model's changes. If that fails the model is given up, so that what is shown next is what the file
    /// holds. Throws tray::TrayError.
    void keep(const tray::FolderLock &held)
    {
        if (!m_model->changed())
            return;
        nlohmann::json now = m_model->description();
        if (now == m_saved)
            return;
        try {
            m_tray.saveCard(held, m_id, now);
            m_file.acknowledge();
        } catch (...) {
            m_model.reset();
            throw;
        }
        m_saved = std::move(now);
    }

private:
    tray::Tray &m_tray;
    std::string m_id;
    tray::WatchedFile m_file;
    nlohmann::json m_saved;
    std::unique_ptr<Model> m_model;
};

} // namespace drivers::reader
