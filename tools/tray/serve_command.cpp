#include "drivers/virtual/cards/cpu_card.h"
#include "drivers/virtual/cards/storage_card.h"
#include "drivers/virtual/reader/held_card.h"
#include "tools/tray/command.h"
#include "tools/tray/vpcd_link.h"

#include <iostream>
#include <memory>

namespace tray_tool {

using drivers::Bytes;
using drivers::tray::Tray;

namespace {

constexpr std::uint16_t kFirstPort = 35963;

// A frame of one byte is one of these; a longer one is an APDU.
constexpr std::uint8_t kPowerOff = 0x00;
constexpr std::uint8_t kPowerOn = 0x01;
constexpr std::uint8_t kReset = 0x02;
constexpr std::uint8_t kGetAtr = 0x04;

template <class Model>
using ServedCard = drivers::reader::HeldCard<Model>;

template <class Model>
Bytes exchange(const Tray &tray, ServedCard<Model> &card, const Bytes &command)
{
    const drivers::tray::FolderLock held = tray.lock();
    if (card.refresh())
        card.model().reset();
    Bytes reply = card.model().transmit(command);
    card.keep(held);
    return reply;
}

template <class Model>
void control(ServedCard<Model> &card, VpcdLink &link, std::uint8_t code)
{
    card.refresh();
    if (code == kPowerOff || code == kPowerOn || code == kReset)
        card.model().reset();
    else if (code == kGetAtr)
        link.send(card.model().atr());
}

template <class Model>
void serveModel(Tray &tray, const std::string &id, int slot)
{
    ServedCard<Model> card(tray, id);
    card.refresh();
    VpcdLink link(static_cast<std::uint16_t>(kFirstPort + slot));
    std::cout << "serving " << id << " at 127.0.0.1:" << kFirstPort + slot << ", end with Ctrl-C" << std::endl;
    while (const std::optional<Bytes> frame = link.receive()) {
        if (frame->size() == 1)
            control(card, link, frame->front());
        else if (!frame->empty())
            link.send(exchange(tray, card, *frame));
    }
    throw std::runtime_error("pcscd closed the connection");
}

void serve(const Options &options, const std::string &id, int slot)
{
    Tray tray = openTray(options);
    const std::string kind = tray.card(id).at("kind");
    if (kind == "cpu")
        serveModel<drivers::cards::CpuCard>(tray, id, slot);
    else if (kind == "mifare")
        serveModel<drivers::cards::StorageCard>(tray, id, slot);
    else
        throw std::runtime_error("card " + id + " is neither a CPU card nor a Mifare card");
}

} // namespace

void addServeCommand(CLI::App &app, const Options &options)
{
    struct Arguments {
        std::string card;
        int slot = 0;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App *const command = app.add_subcommand(
        "serve",
        "Lend a CPU or Mifare card to pcscd's virtual reader (vsmartcard-vpcd) on this machine, until interrupted");
    command->add_option("card", arguments->card, "The card's id")->required();
    command->add_option("--reader", arguments->slot, "0: Virtual PCD 00 00, 1: Virtual PCD 00 01")
        ->check(CLI::Range(0, 1));
    command->callback([=, &options] { serve(options, arguments->card, arguments->slot); });
}

} // namespace tray_tool
